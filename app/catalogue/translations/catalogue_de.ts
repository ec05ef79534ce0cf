<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
<context>
    <name>BrowsePage</name>
    <message>
        <source>There is no source of packages yet.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add a source</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No package fits these conditions.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show all packages</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CategoryList</name>
    <message>
        <source>Categories</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Chip</name>
    <message>
        <source>Remove the condition %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DetailPage</name>
    <message>
        <source>Back</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Keywords</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Search for %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Fields</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Requires</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Origin</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Identifier</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Source</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Revision</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>DirectoryFault</name>
    <message>
        <source>%1: no such directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is not a directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 can&apos;t be read: permission denied</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is no catalogue: it holds neither &quot;packages&quot; nor &quot;dictionary&quot; nor &quot;links&quot;</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>FilterBar</name>
    <message numerus="yes">
        <source>%n package(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>any of them</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>all of them</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Whether one category is enough</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>HeaderBar</name>
    <message>
        <source>Order</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Catalogue order</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>By price</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>By rating</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>By year</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show as a grid</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show as a list</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sources</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch to light</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Switch to dark</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>InstallBadge</name>
    <message>
        <source>Installed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Installing</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Incomplete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unavailable</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>InstallPanel</name>
    <message>
        <source>Install</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Installed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Installing…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Incomplete</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Unavailable</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>Next attempt in %n second(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Trying again…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No source has this package at the moment. It is installed as soon as one does.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Main</name>
    <message>
        <source>wood</source>
        <comment>example of a search</comment>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Catalogue</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>ManifestTexts</name>
    <message>
        <source>yes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>no</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PackageGrid</name>
    <message>
        <source>Packages</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PackageList</name>
    <message>
        <source>Packages</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Package</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Year</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Rating</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Price</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SearchField</name>
    <message>
        <source>Search packages</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Clear the search</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Completions</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Sidebar</name>
    <message>
        <source>Types</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Categories</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SourceFault</name>
    <message>
        <source>%1 is no URL of a database: http(s)://HOST/DATABASE is</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1 is no http or https URL</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>SourcesDialog</name>
    <message>
        <source>Directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>CouchDB database</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Package server</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Sources</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Update all</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n package(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>never updated</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>updated %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Remove %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add a source</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Kind of source</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Directory or URL</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>StatusLine</name>
    <message numerus="yes">
        <source>%n package(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n keyword(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n source(s)</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n source(s) failed</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>Not updated yet</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Updated at %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>TypeTree</name>
    <message>
        <source>Types of packages</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All packages</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>nk::pm::app::CatalogueEngine</name>
    <message>
        <source>The user interface can&apos;t be loaded.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>nk::pm::app::SourceListModel</name>
    <message>
        <source>&quot;%1&quot; is no kind of source</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>nk::pm::app::SourceNetwork</name>
    <message>
        <source>the server wants another user (status %1)</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the server answered with status %1</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>the server didn&apos;t answer in time</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
