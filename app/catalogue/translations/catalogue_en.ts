<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US">
    <context>
        <name>CollectionPage</name>
        <message numerus="yes">
            <source>%n package(s)</source>
            <translation>
                <numerusform>%n package</numerusform>
                <numerusform>%n packages</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>FilterBar</name>
        <message numerus="yes">
            <source>%n package(s)</source>
            <translation>
                <numerusform>%n package</numerusform>
                <numerusform>%n packages</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>HeaderBar</name>
        <message numerus="yes">
            <source>Collection, %n package(s)</source>
            <translation>
                <numerusform>Collection, %n package</numerusform>
                <numerusform>Collection, %n packages</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>InstallPanel</name>
        <message numerus="yes">
            <source>Next attempt in %n second(s)</source>
            <translation>
                <numerusform>Next attempt in %n second</numerusform>
                <numerusform>Next attempt in %n seconds</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>SourcesDialog</name>
        <message numerus="yes">
            <source>%n package(s)</source>
            <translation>
                <numerusform>%n package</numerusform>
                <numerusform>%n packages</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>MoreNote</name>
        <message numerus="yes">
            <source>and %n more</source>
            <translation>
                <numerusform>and %n more</numerusform>
                <numerusform>and %n more</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>StatusLine</name>
        <message numerus="yes">
            <source>%n package(s)</source>
            <translation>
                <numerusform>%n package</numerusform>
                <numerusform>%n packages</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n keyword(s)</source>
            <translation>
                <numerusform>%n keyword</numerusform>
                <numerusform>%n keywords</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n source(s)</source>
            <translation>
                <numerusform>%n source</numerusform>
                <numerusform>%n sources</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n source(s) failed</source>
            <translation>
                <numerusform>%n source failed</numerusform>
                <numerusform>%n sources failed</numerusform>
            </translation>
        </message>
    </context>
</TS>
