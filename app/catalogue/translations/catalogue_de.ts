<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE">
    <context>
        <name>BrowsePage</name>
        <message>
            <source>There are no packages, as a source failed.</source>
            <translation>Es gibt keine Pakete, weil eine Quelle einen Fehler hat.</translation>
        </message>
        <message>
            <source>The sources have not answered yet.</source>
            <translation>Die Quellen haben noch nicht geantwortet.</translation>
        </message>
        <message>
            <source>The sources have no packages.</source>
            <translation>Die Quellen haben keine Pakete.</translation>
        </message>
        <message>
            <source>Show the sources</source>
            <translation>Quellen zeigen</translation>
        </message>
        <message>
            <source>There is no source of packages yet.</source>
            <translation>Noch gibt es keine Quelle für Pakete.</translation>
        </message>
        <message>
            <source>This program trusts the development key: anybody can sign a catalogue for it.</source>
            <translation>Dieses Programm vertraut dem Entwicklungsschlüssel: jeder kann einen Katalog für es signieren.</translation>
        </message>
        <message>
            <source>Add a source</source>
            <translation>Quelle hinzufügen</translation>
        </message>
        <message>
            <source>No package fits these conditions.</source>
            <translation>Kein Paket passt zu diesen Bedingungen.</translation>
        </message>
        <message>
            <source>Show all packages</source>
            <translation>Alle Pakete zeigen</translation>
        </message>
    </context>
    <context>
        <name>CategoryList</name>
        <message>
            <source>Categories</source>
            <translation>Kategorien</translation>
        </message>
    </context>
    <context>
        <name>Chip</name>
        <message>
            <source>Remove the condition %1</source>
            <translation>Bedingung %1 entfernen</translation>
        </message>
    </context>
    <context>
        <name>CollectionDialogs</name>
        <message>
            <source>New collection</source>
            <translation>Neue Sammlung</translation>
        </message>
        <message>
            <source>Save the changes to "%1"?</source>
            <translation>Änderungen an „%1“ speichern?</translation>
        </message>
        <message>
            <source>Otherwise they are lost.</source>
            <translation>Sonst gehen sie verloren.</translation>
        </message>
        <message>
            <source>Save</source>
            <translation>Speichern</translation>
        </message>
        <message>
            <source>Discard</source>
            <translation>Verwerfen</translation>
        </message>
        <message>
            <source>Cancel</source>
            <translation>Abbrechen</translation>
        </message>
        <message>
            <source>"%1" was changed by another program</source>
            <translation>„%1“ wurde von einem anderen Programm geändert</translation>
        </message>
        <message>
            <source>Saving here would overwrite those changes.</source>
            <translation>Beim Speichern an dieser Stelle gingen dessen Änderungen verloren.</translation>
        </message>
        <message>
            <source>Save as…</source>
            <translation>Speichern unter…</translation>
        </message>
        <message>
            <source>Overwrite</source>
            <translation>Überschreiben</translation>
        </message>
        <message>
            <source>OK</source>
            <translation>OK</translation>
        </message>
    </context>
    <context>
        <name>CollectionPage</name>
        <message>
            <source>Collection</source>
            <translation>Sammlung</translation>
        </message>
        <message>
            <source>Back</source>
            <translation>Zurück</translation>
        </message>
        <message>
            <source>New collection</source>
            <translation>Neue Sammlung</translation>
        </message>
        <message numerus="yes">
            <source>%n package(s)</source>
            <translation>
                <numerusform>%n Paket</numerusform>
                <numerusform>%n Pakete</numerusform>
            </translation>
        </message>
        <message>
            <source>not saved</source>
            <translation>nicht gespeichert</translation>
        </message>
        <message>
            <source>New</source>
            <translation>Neu</translation>
        </message>
        <message>
            <source>Open…</source>
            <translation>Öffnen…</translation>
        </message>
        <message>
            <source>Save</source>
            <translation>Speichern</translation>
        </message>
        <message>
            <source>Save as…</source>
            <translation>Speichern unter…</translation>
        </message>
        <message>
            <source>Packages of the collection</source>
            <translation>Pakete der Sammlung</translation>
        </message>
        <message>
            <source>Nothing is in this collection yet. Choose a package and then "Add to collection", or open a file.</source>
            <translation>Noch ist nichts in dieser Sammlung. Ein Paket wählen und dann „Zur Sammlung hinzufügen“, oder eine Datei öffnen.</translation>
        </message>
        <message>
            <source>Choose packages</source>
            <translation>Pakete auswählen</translation>
        </message>
    </context>
    <context>
        <name>CollectionRow</name>
        <message>
            <source>Installed</source>
            <translation>Installiert</translation>
        </message>
        <message>
            <source>Installing…</source>
            <translation>Wird installiert…</translation>
        </message>
        <message>
            <source>Incomplete</source>
            <translation>Unvollständig</translation>
        </message>
        <message>
            <source>Unreadable</source>
            <translation>Unlesbar</translation>
        </message>
        <message>
            <source>The file has something else than a package here.</source>
            <translation>In der Datei steht hier etwas anderes als ein Paket.</translation>
        </message>
        <message>
            <source>Waiting…</source>
            <translation>Wartet…</translation>
        </message>
        <message>
            <source>Unknown package</source>
            <translation>Unbekanntes Paket</translation>
        </message>
        <message>
            <source>No source has it. It is installed as soon as one does.</source>
            <translation>Keine Quelle hat es. Es wird installiert, sobald eine es hat.</translation>
        </message>
        <message>
            <source>Unavailable</source>
            <translation>Nicht verfügbar</translation>
        </message>
        <message>
            <source>Its source can't be reached. It is installed as soon as that can.</source>
            <translation>Seine Quelle ist nicht erreichbar. Es wird installiert, sobald sie es ist.</translation>
        </message>
        <message>
            <source>Remove %1 from the collection</source>
            <translation>%1 aus der Sammlung entfernen</translation>
        </message>
    </context>
    <context>
        <name>CollectionToggle</name>
        <message>
            <source>Remove from collection</source>
            <translation>Aus Sammlung entfernen</translation>
        </message>
        <message>
            <source>Add to collection</source>
            <translation>Zur Sammlung hinzufügen</translation>
        </message>
    </context>
    <context>
        <name>DetailPage</name>
        <message>
            <source>Back</source>
            <translation>Zurück</translation>
        </message>
        <message>
            <source>Keywords</source>
            <translation>Stichwörter</translation>
        </message>
        <message>
            <source>Search for %1</source>
            <translation>Nach %1 suchen</translation>
        </message>
        <message>
            <source>Fields</source>
            <translation>Angaben</translation>
        </message>
        <message>
            <source>Requires</source>
            <translation>Benötigt</translation>
        </message>
        <message>
            <source>Files</source>
            <translation>Dateien</translation>
        </message>
        <message>
            <source>Origin</source>
            <translation>Herkunft</translation>
        </message>
        <message>
            <source>Identifier</source>
            <translation>Kennung</translation>
        </message>
        <message>
            <source>Source</source>
            <translation>Quelle</translation>
        </message>
        <message>
            <source>Revision</source>
            <translation>Revision</translation>
        </message>
        <message>
            <source>Issuer</source>
            <translation>Aussteller</translation>
        </message>
        <message>
            <source>not signed</source>
            <translation>nicht signiert</translation>
        </message>
    </context>
    <context>
        <name>DirectoryFault</name>
        <message>
            <source>%1: no such directory</source>
            <translation>%1: Dieses Verzeichnis gibt es nicht</translation>
        </message>
        <message>
            <source>%1 is not a directory</source>
            <translation>%1 ist kein Verzeichnis</translation>
        </message>
        <message>
            <source>%1 can't be read: permission denied</source>
            <translation>%1 ist nicht lesbar: Zugriff verweigert</translation>
        </message>
        <message>
            <source>%1 is no catalogue: it holds neither "packages" nor "dictionary" nor "links"</source>
            <translation>%1 ist kein Katalog: Es enthält weder „packages“ noch „dictionary“ noch „links“</translation>
        </message>
        <message>
            <source>%1 can't hold the program's own files: make it writable, or name another directory with --data</source>
            <translation>%1 kann die Dateien des Programms nicht aufnehmen: Machen Sie es beschreibbar oder nennen Sie mit --data ein anderes Verzeichnis</translation>
        </message>
    </context>
    <context>
        <name>FilterBar</name>
        <message numerus="yes">
            <source>%n package(s)</source>
            <translation>
                <numerusform>%n Paket</numerusform>
                <numerusform>%n Pakete</numerusform>
            </translation>
        </message>
        <message>
            <source>any of them</source>
            <translation>eine davon</translation>
        </message>
        <message>
            <source>all of them</source>
            <translation>alle davon</translation>
        </message>
        <message>
            <source>Whether one category is enough</source>
            <translation>Ob eine der Kategorien genügt</translation>
        </message>
    </context>
    <context>
        <name>HeaderBar</name>
        <message>
            <source>Order</source>
            <translation>Reihenfolge</translation>
        </message>
        <message>
            <source>Catalogue order</source>
            <translation>Katalogfolge</translation>
        </message>
        <message>
            <source>By price</source>
            <translation>Nach Preis</translation>
        </message>
        <message>
            <source>By rating</source>
            <translation>Nach Bewertung</translation>
        </message>
        <message>
            <source>By year</source>
            <translation>Nach Jahr</translation>
        </message>
        <message>
            <source>Show as a grid</source>
            <translation>Als Raster zeigen</translation>
        </message>
        <message>
            <source>Show as a list</source>
            <translation>Als Liste zeigen</translation>
        </message>
        <message>
            <source>Sources</source>
            <translation>Quellen</translation>
        </message>
        <message>
            <source>Switch to light</source>
            <translation>Helle Farben</translation>
        </message>
        <message>
            <source>Switch to dark</source>
            <translation>Dunkle Farben</translation>
        </message>
        <message>
            <source>Collection</source>
            <translation>Sammlung</translation>
        </message>
        <message numerus="yes">
            <source>Collection, %n package(s)</source>
            <translation>
                <numerusform>Sammlung, %n Paket</numerusform>
                <numerusform>Sammlung, %n Pakete</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>InstallBadge</name>
        <message>
            <source>Installed</source>
            <translation>Installiert</translation>
        </message>
        <message>
            <source>Installing</source>
            <translation>Wird installiert</translation>
        </message>
        <message>
            <source>Incomplete</source>
            <translation>Unvollständig</translation>
        </message>
        <message>
            <source>Unavailable</source>
            <translation>Nicht verfügbar</translation>
        </message>
    </context>
    <context>
        <name>InstallPanel</name>
        <message>
            <source>Install</source>
            <translation>Installieren</translation>
        </message>
        <message>
            <source>Installed</source>
            <translation>Installiert</translation>
        </message>
        <message>
            <source>Installing…</source>
            <translation>Wird installiert …</translation>
        </message>
        <message>
            <source>Incomplete</source>
            <translation>Unvollständig</translation>
        </message>
        <message>
            <source>Unavailable</source>
            <translation>Nicht verfügbar</translation>
        </message>
        <message numerus="yes">
            <source>Next attempt in %n second(s)</source>
            <translation>
                <numerusform>Nächster Versuch in %n Sekunde</numerusform>
                <numerusform>Nächster Versuch in %n Sekunden</numerusform>
            </translation>
        </message>
        <message>
            <source>Trying again…</source>
            <translation>Neuer Versuch …</translation>
        </message>
        <message>
            <source>No source has this package at the moment. It is installed as soon as one does.</source>
            <translation>Zurzeit hat keine Quelle dieses Paket. Es wird installiert, sobald eine es hat.</translation>
        </message>
    </context>
    <context>
        <name>Main</name>
        <message>
            <source>Catalogue</source>
            <translation>Katalog</translation>
        </message>
        <message>
            <source>wo</source>
            <comment>beginning of a word that many packages have</comment>
            <translation>wo</translation>
        </message>
        <message>
            <source>%1 – Catalogue</source>
            <translation>%1 – Katalog</translation>
        </message>
        <message>
            <source>New collection</source>
            <translation>Neue Sammlung</translation>
        </message>
    </context>
    <context>
        <name>ManifestTexts</name>
        <message>
            <source>yes</source>
            <translation>ja</translation>
        </message>
        <message>
            <source>no</source>
            <translation>nein</translation>
        </message>
    </context>
    <context>
        <name>MoreNote</name>
        <message numerus="yes">
            <source>and %n more</source>
            <translation>
                <numerusform>und %n weiterer Eintrag</numerusform>
                <numerusform>und %n weitere</numerusform>
            </translation>
        </message>
    </context>
    <context>
        <name>PackageGrid</name>
        <message>
            <source>Packages</source>
            <translation>Pakete</translation>
        </message>
    </context>
    <context>
        <name>PackageList</name>
        <message>
            <source>Packages</source>
            <translation>Pakete</translation>
        </message>
        <message>
            <source>Package</source>
            <translation>Paket</translation>
        </message>
        <message>
            <source>Year</source>
            <translation>Jahr</translation>
        </message>
        <message>
            <source>Rating</source>
            <translation>Bewertung</translation>
        </message>
        <message>
            <source>Price</source>
            <translation>Preis</translation>
        </message>
    </context>
    <context>
        <name>SearchField</name>
        <message>
            <source>Search packages</source>
            <translation>Pakete suchen</translation>
        </message>
        <message>
            <source>Clear the search</source>
            <translation>Suche leeren</translation>
        </message>
        <message>
            <source>Completions</source>
            <translation>Vorschläge</translation>
        </message>
    </context>
    <context>
        <name>Sidebar</name>
        <message>
            <source>Types</source>
            <translation>Arten</translation>
        </message>
        <message>
            <source>Categories</source>
            <translation>Kategorien</translation>
        </message>
    </context>
    <context>
        <name>SourceFault</name>
        <message>
            <source>%1 is no URL of a database: http(s)://HOST/DATABASE is</source>
            <translation>%1 ist keine URL einer Datenbank; die hat die Form http(s)://RECHNER/DATENBANK</translation>
        </message>
        <message>
            <source>%1 is no http or https URL</source>
            <translation>%1 ist keine http- oder https-URL</translation>
        </message>
    </context>
    <context>
        <name>SourcesDialog</name>
        <message>
            <source>Directory</source>
            <translation>Verzeichnis</translation>
        </message>
        <message>
            <source>CouchDB database</source>
            <translation>CouchDB-Datenbank</translation>
        </message>
        <message>
            <source>Package server</source>
            <translation>Paketserver</translation>
        </message>
        <message>
            <source>Sources</source>
            <translation>Quellen</translation>
        </message>
        <message>
            <source>Update all</source>
            <translation>Alle auffrischen</translation>
        </message>
        <message>
            <source>Close</source>
            <translation>Schließen</translation>
        </message>
        <message numerus="yes">
            <source>%n package(s)</source>
            <translation>
                <numerusform>%n Paket</numerusform>
                <numerusform>%n Pakete</numerusform>
            </translation>
        </message>
        <message>
            <source>never updated</source>
            <translation>nie aufgefrischt</translation>
        </message>
        <message>
            <source>updated %1</source>
            <translation>aufgefrischt %1</translation>
        </message>
        <message>
            <source>Remove %1</source>
            <translation>%1 entfernen</translation>
        </message>
        <message>
            <source>Add a source</source>
            <translation>Quelle hinzufügen</translation>
        </message>
        <message>
            <source>Kind of source</source>
            <translation>Art der Quelle</translation>
        </message>
        <message>
            <source>Directory or URL</source>
            <translation>Verzeichnis oder URL</translation>
        </message>
        <message>
            <source>Add</source>
            <translation>Hinzufügen</translation>
        </message>
    </context>
    <context>
        <name>StatusLine</name>
        <message numerus="yes">
            <source>%n package(s)</source>
            <translation>
                <numerusform>%n Paket</numerusform>
                <numerusform>%n Pakete</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n keyword(s)</source>
            <translation>
                <numerusform>%n Stichwort</numerusform>
                <numerusform>%n Stichwörter</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n source(s)</source>
            <translation>
                <numerusform>%n Quelle</numerusform>
                <numerusform>%n Quellen</numerusform>
            </translation>
        </message>
        <message numerus="yes">
            <source>%n source(s) failed</source>
            <translation>
                <numerusform>%n Quelle mit Fehler</numerusform>
                <numerusform>%n Quellen mit Fehlern</numerusform>
            </translation>
        </message>
        <message>
            <source>Not updated yet</source>
            <translation>Noch nicht aufgefrischt</translation>
        </message>
        <message>
            <source>Updated at %1</source>
            <translation>Stand: %1</translation>
        </message>
    </context>
    <context>
        <name>TypeTree</name>
        <message>
            <source>Types of packages</source>
            <translation>Arten von Paketen</translation>
        </message>
        <message>
            <source>All packages</source>
            <translation>Alle Pakete</translation>
        </message>
    </context>
    <context>
        <name>nk::Request</name>
        <message>
            <source>the address is none of HTTP</source>
            <translation>Die Adresse ist keine von HTTP</translation>
        </message>
        <message>
            <source>the network isn't there any more</source>
            <translation>Das Netz ist nicht mehr da</translation>
        </message>
        <message>
            <source>the request was cancelled</source>
            <translation>Die Anfrage wurde abgebrochen</translation>
        </message>
        <message>
            <source>the host wasn't found</source>
            <translation>Der Rechner wurde nicht gefunden</translation>
        </message>
        <message>
            <source>the connection was refused</source>
            <translation>Die Verbindung wurde abgelehnt</translation>
        </message>
        <message>
            <source>the host can't be reached</source>
            <translation>Der Rechner ist nicht erreichbar</translation>
        </message>
        <message>
            <source>there is no proxy for it</source>
            <translation>Es gibt keinen Proxy dafür</translation>
        </message>
        <message>
            <source>the proxy refused</source>
            <translation>Der Proxy lehnte ab</translation>
        </message>
        <message>
            <source>the proxy wants another user</source>
            <translation>Der Proxy verlangt einen anderen Benutzer</translation>
        </message>
        <message>
            <source>no secure connection came about</source>
            <translation>Eine sichere Verbindung kam nicht zustande</translation>
        </message>
        <message>
            <source>the server didn't answer in time</source>
            <translation>Der Server antwortete nicht rechtzeitig</translation>
        </message>
        <message>
            <source>the connection was closed before the end</source>
            <translation>Die Verbindung wurde vor dem Ende geschlossen</translation>
        </message>
        <message>
            <source>the answer is malformed</source>
            <translation>Die Antwort ist fehlerhaft</translation>
        </message>
        <message>
            <source>the answer has too many headers</source>
            <translation>Die Antwort hat zu viele Kopfzeilen</translation>
        </message>
        <message>
            <source>the answer doesn't tell where it ends</source>
            <translation>Die Antwort sagt nicht, wo sie endet</translation>
        </message>
        <message>
            <source>the answer isn't to what was asked</source>
            <translation>Die Antwort passt nicht zur Anfrage</translation>
        </message>
        <message>
            <source>the answer is too large</source>
            <translation>Die Antwort ist zu groß</translation>
        </message>
        <message>
            <source>what came is too large, or can't be stored</source>
            <translation>Was ankam, ist zu groß oder lässt sich nicht speichern</translation>
        </message>
        <message>
            <source>the server redirects to an address that can't be followed</source>
            <translation>Der Server leitet an eine Adresse weiter, der nicht gefolgt werden kann</translation>
        </message>
        <message>
            <source>the server redirects too often</source>
            <translation>Der Server leitet zu oft weiter</translation>
        </message>
        <message>
            <source>the server answered with status %1</source>
            <translation>Der Server antwortete mit Status %1</translation>
        </message>
    </context>
    <context>
        <name>nk::pm::app::CatalogueEngine</name>
        <message>
            <source>The user interface can't be loaded.</source>
            <translation>Die Oberfläche kann nicht geladen werden.</translation>
        </message>
    </context>
    <context>
        <name>nk::pm::app::CollectionDocument</name>
        <message>
            <source>%1 can't be kept in a collection: its identifier has characters beyond Latin-1.</source>
            <translation>%1 kann nicht in eine Sammlung: Die Kennung hat Zeichen außerhalb von Latin-1.</translation>
        </message>
        <message>
            <source>%1 is not a collection, or it is damaged.</source>
            <translation>%1 ist keine Sammlung oder beschädigt.</translation>
        </message>
        <message>
            <source>Choose another file.</source>
            <translation>Bitte eine andere Datei wählen.</translation>
        </message>
        <message>
            <source>%1 can't be opened.</source>
            <translation>%1 lässt sich nicht öffnen.</translation>
        </message>
        <message>
            <source>Check that the file is there and that you may read it.</source>
            <translation>Bitte prüfen, ob es die Datei gibt und ob sie lesbar ist.</translation>
        </message>
        <message>
            <source>%1 was written by a newer version of this program.</source>
            <translation>%1 stammt von einer neueren Version dieses Programms.</translation>
        </message>
        <message>
            <source>Update the program to open it.</source>
            <translation>Um sie zu öffnen, bitte das Programm aktualisieren.</translation>
        </message>
        <message>
            <source>%1 can't be written.</source>
            <translation>%1 lässt sich nicht schreiben.</translation>
        </message>
        <message>
            <source>Make room or choose another place; nothing is lost until then.</source>
            <translation>Bitte Platz schaffen oder einen anderen Ort wählen; bis dahin geht nichts verloren.</translation>
        </message>
    </context>
    <context>
        <name>nk::pm::app::FileChooser</name>
        <message>
            <source>Open a collection</source>
            <translation>Sammlung öffnen</translation>
        </message>
        <message>
            <source>Save the collection</source>
            <translation>Sammlung speichern</translation>
        </message>
        <message>
            <source>collection</source>
            <comment>name of a file</comment>
            <translation>sammlung</translation>
        </message>
        <message>
            <source>Collections (*.json)</source>
            <translation>Sammlungen (*.json)</translation>
        </message>
        <message>
            <source>All files (*)</source>
            <translation>Alle Dateien (*)</translation>
        </message>
    </context>
    <context>
        <name>nk::pm::app::SourceListModel</name>
        <message>
            <source>"%1" is no kind of source</source>
            <translation>„%1“ ist keine Art von Quelle</translation>
        </message>
    </context>
    <context>
        <name>nk::pm::app::SourceNetwork</name>
        <message>
            <source>the server wants another user (status %1)</source>
            <translation>Der Server verlangt einen anderen Benutzer (Status %1)</translation>
        </message>
        <message>
            <source>the server answered with status %1</source>
            <translation>Der Server antwortete mit Status %1</translation>
        </message>
        <message>
            <source>the server answered with nothing</source>
            <translation>Der Server antwortete mit nichts</translation>
        </message>
    </context>
    <context>
        <name>nk::pm::app::TrackedSource</name>
        <message>
            <source>some of its files can't be read</source>
            <translation>Einige seiner Dateien sind nicht lesbar</translation>
        </message>
        <message>
            <source>its ledger was refused: damaged, or not signed for this program</source>
            <translation>Die Paketliste wurde abgelehnt: beschädigt oder nicht für dieses Programm signiert</translation>
        </message>
        <message>
            <source>its list of packages was refused: damaged, or larger than 4 MiB</source>
            <translation>Die Paketliste wurde abgelehnt: beschädigt oder größer als 4 MiB</translation>
        </message>
    </context>
</TS>
