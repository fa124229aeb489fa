<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>desktop::FileModel</name>
    <message>
        <source>Name</source>
        <translation>Name</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Modified</source>
        <translation>Geändert</translation>
    </message>
</context>
<context>
    <name>desktop::MainWindow</name>
    <message>
        <source>Open Archive</source>
        <translation>Archiv öffnen</translation>
    </message>
    <message>
        <source>Archives</source>
        <translation>Archive</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Alle Dateien</translation>
    </message>
    <message numerus="yes">
        <source>%n item(s) selected, %1 bytes in files</source>
        <translation>
            <numerusform>%n Eintrag ausgewählt, %1 Bytes in Dateien</numerusform>
            <numerusform>%n Einträge ausgewählt, %1 Bytes in Dateien</numerusform>
        </translation>
    </message>
    <message>
        <source>Everything in the archive</source>
        <translation>Alles, was im Archiv ist</translation>
    </message>
    <message>
        <source>The folder %1</source>
        <translation>Der Ordner %1</translation>
    </message>
    <message numerus="yes">
        <source>%n selected item(s)</source>
        <translation>
            <numerusform>%n ausgewählter Eintrag</numerusform>
            <numerusform>%n ausgewählte Einträge</numerusform>
        </translation>
    </message>
    <message>
        <source>About morvunp</source>
        <translation>Über morvunp</translation>
    </message>
    <message>
        <source>morvunp %1 shows and unpacks 7z, cabinet, ISO/UDF and RAR archives.</source>
        <translation>morvunp %1 zeigt und entpackt 7z-, Cabinet-, ISO/UDF- und RAR-Archive.</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>Ö&amp;ffnen…</translation>
    </message>
    <message>
        <source>&amp;Close Archive</source>
        <translation>Archiv &amp;schließen</translation>
    </message>
    <message>
        <source>&amp;Up</source>
        <translation>Nach o&amp;ben</translation>
    </message>
    <message>
        <source>Unpack &amp;All…</source>
        <translation>&amp;Alles entpacken…</translation>
    </message>
    <message>
        <source>Unpack &amp;Folder…</source>
        <translation>&amp;Ordner entpacken…</translation>
    </message>
    <message>
        <source>Unpack &amp;Selected…</source>
        <translation>Aus&amp;wahl entpacken…</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>Ü&amp;ber</translation>
    </message>
    <message>
        <source>&amp;Archive</source>
        <translation>&amp;Archiv</translation>
    </message>
    <message>
        <source>&amp;Unpack</source>
        <translation>&amp;Entpacken</translation>
    </message>
    <message>
        <source>&amp;Go</source>
        <translation>&amp;Gehe</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Toolbar</source>
        <translation>Werkzeugleiste</translation>
    </message>
    <message>
        <source>Folders</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Dateien</translation>
    </message>
    <message>
        <source>Open an archive, or drop one here.</source>
        <translation>Öffnen Sie ein Archiv oder legen Sie eines hier ab.</translation>
    </message>
</context>
<context>
    <name>desktop::MissingModel</name>
    <message>
        <source>Item</source>
        <translation>Eintrag</translation>
    </message>
    <message>
        <source>Why</source>
        <translation>Grund</translation>
    </message>
</context>
<context>
    <name>desktop::OutcomeWindow</name>
    <message>
        <source>Stopped. Files: %1, folders: %2, bytes: %3.</source>
        <translation>Angehalten. Dateien: %1, Ordner: %2, Bytes: %3.</translation>
    </message>
    <message>
        <source>Unpacked. Files: %1, folders: %2, bytes: %3.</source>
        <translation>Entpackt. Dateien: %1, Ordner: %2, Bytes: %3.</translation>
    </message>
    <message>
        <source>Unpacked</source>
        <translation>Entpackt</translation>
    </message>
    <message>
        <source>Not everything came out</source>
        <translation>Nicht alles kam heraus</translation>
    </message>
    <message>
        <source>Did not come out (%1)</source>
        <translation>Nicht entpackt (%1)</translation>
    </message>
    <message>
        <source>Written (%1)</source>
        <translation>Geschrieben (%1)</translation>
    </message>
    <message>
        <source>&amp;Open Folder</source>
        <translation>&amp;Ordner öffnen</translation>
    </message>
</context>
<context>
    <name>desktop::ProgressWindow</name>
    <message>
        <source>Unpacking</source>
        <translation>Wird entpackt</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>&amp;Anhalten</translation>
    </message>
    <message>
        <source>Everything:</source>
        <translation>Insgesamt:</translation>
    </message>
    <message>
        <source>Written:</source>
        <translation>Geschrieben:</translation>
    </message>
</context>
<context>
    <name>desktop::UnpackDialog</name>
    <message>
        <source>Unpack</source>
        <translation>Entpacken</translation>
    </message>
    <message>
        <source>&amp;Unpack to:</source>
        <translation>Entpacken &amp;nach:</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>&amp;Durchsuchen…</translation>
    </message>
    <message>
        <source>Ask before an &amp;existing file is replaced</source>
        <translation>Nachfragen, bevor eine &amp;vorhandene Datei ersetzt wird</translation>
    </message>
    <message>
        <source>Everything: put all &amp;files into one folder</source>
        <translation>Alles: sämtliche Dateien in einen &amp;Ordner legen</translation>
    </message>
    <message>
        <source>A folder: leave out the folders &amp;above it</source>
        <translation>Ein Ordner: die Ordner darüber &amp;weglassen</translation>
    </message>
    <message>
        <source>Selected files: leave &amp;out their folders</source>
        <translation>Ausgewählte Dateien: &amp;ihre Ordner weglassen</translation>
    </message>
    <message>
        <source>Options</source>
        <translation>Optionen</translation>
    </message>
    <message>
        <source>U&amp;npack</source>
        <translation>&amp;Entpacken</translation>
    </message>
    <message>
        <source>Unpack to</source>
        <translation>Entpacken nach</translation>
    </message>
    <message>
        <source>This folder cannot be written to. Choose another one.</source>
        <translation>In diesen Ordner kann nicht geschrieben werden. Wählen Sie einen anderen.</translation>
    </message>
</context>
<context>
    <name>host::Reason</name>
    <message>
        <source>no such file</source>
        <translation>diese Datei gibt es nicht</translation>
    </message>
    <message>
        <source>no permission to read it</source>
        <translation>keine Berechtigung, sie zu lesen</translation>
    </message>
    <message>
        <source>it is a folder</source>
        <translation>das ist ein Ordner</translation>
    </message>
    <message>
        <source>not a regular file</source>
        <translation>keine gewöhnliche Datei</translation>
    </message>
    <message>
        <source>the file is empty</source>
        <translation>die Datei ist leer</translation>
    </message>
    <message>
        <source>a recorded date is impossible</source>
        <translation>ein gespeichertes Datum ist unmöglich</translation>
    </message>
    <message>
        <source>damaged: it names a partition that it lacks</source>
        <translation>beschädigt: es nennt eine Partition, die es nicht hat</translation>
    </message>
    <message>
        <source>another program is writing to it</source>
        <translation>ein anderes Programm schreibt gerade hinein</translation>
    </message>
    <message>
        <source>a 7z archive, but the 7-Zip engine is missing; install the package p7zip-full (or 7zip with its 7z.so)</source>
        <translation>ein 7z-Archiv, aber die 7-Zip-Engine fehlt; installieren Sie das Paket p7zip-full (oder 7zip mit seiner 7z.so)</translation>
    </message>
    <message>
        <source>a RAR archive, but morvunp was built without the RAR engine</source>
        <translation>ein RAR-Archiv, aber morvunp wurde ohne die RAR-Engine gebaut</translation>
    </message>
    <message>
        <source>not an archive, or one whose module is missing</source>
        <translation>kein Archiv, oder eines, dessen Modul fehlt</translation>
    </message>
    <message>
        <source>not an archive that morvunp knows, or damaged</source>
        <translation>kein Archiv, das morvunp kennt, oder beschädigt</translation>
    </message>
    <message>
        <source>the list is cut short</source>
        <translation>die Liste ist unvollständig</translation>
    </message>
    <message>
        <source>a volume of the set is missing</source>
        <translation>ein Teil des Satzes fehlt</translation>
    </message>
    <message>
        <source>the volume %1 is missing</source>
        <translation>der Teil %1 fehlt</translation>
    </message>
    <message>
        <source>wrong password</source>
        <translation>falsches Passwort</translation>
    </message>
    <message>
        <source>wrong password or damaged; the archive does not tell which</source>
        <translation>falsches Passwort oder beschädigt; das Archiv verrät nicht, was von beidem</translation>
    </message>
    <message>
        <source>it is encrypted and no password was given</source>
        <translation>verschlüsselt, und es wurde kein Passwort angegeben</translation>
    </message>
    <message>
        <source>it begins in an earlier volume; open the first one</source>
        <translation>beginnt in einem früheren Teil; öffnen Sie den ersten</translation>
    </message>
    <message>
        <source>refused: unsafe name</source>
        <translation>abgelehnt: unsicherer Name</translation>
    </message>
    <message>
        <source>refused: a link that leads out of the folder</source>
        <translation>abgelehnt: eine Verknüpfung, die aus dem Ordner hinausführt</translation>
    </message>
    <message>
        <source>refused: a link to or copy of an item that was not unpacked</source>
        <translation>abgelehnt: Verknüpfung mit oder Kopie von einem Eintrag, der nicht entpackt wurde</translation>
    </message>
    <message>
        <source>failed: could not be written</source>
        <translation>fehlgeschlagen: konnte nicht geschrieben werden</translation>
    </message>
    <message>
        <source>failed: it takes more memory than there is</source>
        <translation>fehlgeschlagen: braucht mehr Speicher, als da ist</translation>
    </message>
    <message>
        <source>failed: a symbolic link stands in its place</source>
        <translation>fehlgeschlagen: an seiner Stelle steht eine symbolische Verknüpfung</translation>
    </message>
    <message>
        <source>failed: a folder stands in its place</source>
        <translation>fehlgeschlagen: an seiner Stelle steht ein Ordner</translation>
    </message>
    <message>
        <source>cut short: the archive ends before the file does</source>
        <translation>abgeschnitten: das Archiv endet vor der Datei</translation>
    </message>
    <message>
        <source>interrupted</source>
        <translation>abgebrochen</translation>
    </message>
    <message>
        <source>not reached</source>
        <translation>nicht mehr erreicht</translation>
    </message>
    <message>
        <source>kept the existing file</source>
        <translation>die vorhandene Datei wurde behalten</translation>
    </message>
    <message>
        <source>failed: another program has it open</source>
        <translation>fehlgeschlagen: ein anderes Programm hat die Datei geöffnet</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>fehlgeschlagen</translation>
    </message>
    <message>
        <source>failed: something else stands in the place of its folder</source>
        <translation>fehlgeschlagen: an der Stelle des Ordners steht etwas anderes</translation>
    </message>
    <message>
        <source>failed: it would replace the archive itself</source>
        <translation>fehlgeschlagen: die Datei würde das Archiv selbst ersetzen</translation>
    </message>
    <message>
        <source>failed: its name is too long</source>
        <translation>fehlgeschlagen: der Name ist zu lang</translation>
    </message>
    <message>
        <source>cut short: it has fewer bytes than the archive records</source>
        <translation>abgeschnitten: die Datei hat weniger Bytes, als das Archiv angibt</translation>
    </message>
    <message>
        <source>failed: its method of compression is not supported</source>
        <translation>fehlgeschlagen: das Kompressionsverfahren wird nicht unterstützt</translation>
    </message>
    <message>
        <source>failed: it passes a limit</source>
        <translation>fehlgeschlagen: eine Grenze wurde überschritten</translation>
    </message>
    <message>
        <source>failed: damaged in the archive</source>
        <translation>fehlgeschlagen: im Archiv beschädigt</translation>
    </message>
    <message>
        <source>replaced by a later item with the same output path</source>
        <translation>durch ein späteres Element mit demselben Ausgabepfad ersetzt</translation>
    </message>
    <message>
        <source>cut short: the file ends before the archive does</source>
        <translation>abgeschnitten: die Datei endet vor dem Archiv</translation>
    </message>
    <message>
        <source>damaged: not all of its folders could be read</source>
        <translation>beschädigt: nicht alle Ordner konnten gelesen werden</translation>
    </message>
    <message>
        <source>damaged: its table of files could not be read whole</source>
        <translation>beschädigt: das Dateiverzeichnis konnte nicht ganz gelesen werden</translation>
    </message>
    <message>
        <source>damaged: the engine found errors in its headers</source>
        <translation>beschädigt: die Engine fand Fehler in den Kopfdaten</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Shows and unpacks 7z, cabinet, ISO/UDF and RAR archives.</source>
        <translation>Zeigt und entpackt 7z-, Cabinet-, ISO/UDF- und RAR-Archive.</translation>
    </message>
    <message>
        <source>The archive to open.</source>
        <translation>Das Archiv, das geöffnet werden soll.</translation>
    </message>
</context>
</TS>
