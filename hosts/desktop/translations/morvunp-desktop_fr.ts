<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>desktop::FileModel</name>
    <message>
        <source>Name</source>
        <translation>Nom</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Taille</translation>
    </message>
    <message>
        <source>Modified</source>
        <translation>Modifié</translation>
    </message>
</context>
<context>
    <name>desktop::MainWindow</name>
    <message>
        <source>Open Archive</source>
        <translation>Ouvrir une archive</translation>
    </message>
    <message>
        <source>Archives</source>
        <translation>Archives</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Tous les fichiers</translation>
    </message>
    <message numerus="yes">
        <source>%n item(s) selected, %1 bytes in files</source>
        <translation>
            <numerusform>%n élément sélectionné, %1 octets de fichiers</numerusform>
            <numerusform>%n éléments sélectionnés, %1 octets de fichiers</numerusform>
        </translation>
    </message>
    <message>
        <source>Everything in the archive</source>
        <translation>Tout ce que contient l’archive</translation>
    </message>
    <message>
        <source>The folder %1</source>
        <translation>Le dossier %1</translation>
    </message>
    <message numerus="yes">
        <source>%n selected item(s)</source>
        <translation>
            <numerusform>%n élément sélectionné</numerusform>
            <numerusform>%n éléments sélectionnés</numerusform>
        </translation>
    </message>
    <message>
        <source>About morvunp</source>
        <translation>À propos de morvunp</translation>
    </message>
    <message>
        <source>morvunp %1 shows and unpacks 7z, cabinet, ISO/UDF and RAR archives.</source>
        <translation>morvunp %1 affiche et extrait les archives 7z, cabinet, ISO/UDF et RAR.</translation>
    </message>
    <message>
        <source>&amp;Open…</source>
        <translation>&amp;Ouvrir…</translation>
    </message>
    <message>
        <source>&amp;Close Archive</source>
        <translation>&amp;Fermer l’archive</translation>
    </message>
    <message>
        <source>&amp;Up</source>
        <translation>Dossier &amp;parent</translation>
    </message>
    <message>
        <source>Unpack &amp;All…</source>
        <translation>&amp;Tout extraire…</translation>
    </message>
    <message>
        <source>Unpack &amp;Folder…</source>
        <translation>Extraire le &amp;dossier…</translation>
    </message>
    <message>
        <source>Unpack &amp;Selected…</source>
        <translation>Extraire la &amp;sélection…</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Quitter</translation>
    </message>
    <message>
        <source>&amp;About</source>
        <translation>À &amp;propos</translation>
    </message>
    <message>
        <source>&amp;Archive</source>
        <translation>&amp;Archive</translation>
    </message>
    <message>
        <source>&amp;Unpack</source>
        <translation>&amp;Extraire</translation>
    </message>
    <message>
        <source>&amp;Go</source>
        <translation>A&amp;ller</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>A&amp;ide</translation>
    </message>
    <message>
        <source>Toolbar</source>
        <translation>Barre d’outils</translation>
    </message>
    <message>
        <source>Folders</source>
        <translation>Dossiers</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Fichiers</translation>
    </message>
    <message>
        <source>Open an archive, or drop one here.</source>
        <translation>Ouvrez une archive ou déposez-en une ici.</translation>
    </message>
</context>
<context>
    <name>desktop::MissingModel</name>
    <message>
        <source>Item</source>
        <translation>Élément</translation>
    </message>
    <message>
        <source>Why</source>
        <translation>Raison</translation>
    </message>
</context>
<context>
    <name>desktop::OutcomeWindow</name>
    <message>
        <source>Stopped. Files: %1, folders: %2, bytes: %3.</source>
        <translation>Arrêté. Fichiers&#xa0;: %1, dossiers&#xa0;: %2, octets&#xa0;: %3.</translation>
    </message>
    <message>
        <source>Unpacked. Files: %1, folders: %2, bytes: %3.</source>
        <translation>Extrait. Fichiers&#xa0;: %1, dossiers&#xa0;: %2, octets&#xa0;: %3.</translation>
    </message>
    <message>
        <source>Unpacked</source>
        <translation>Extraction terminée</translation>
    </message>
    <message>
        <source>Not everything came out</source>
        <translation>Tout n’a pas été extrait</translation>
    </message>
    <message>
        <source>Did not come out (%1)</source>
        <translation>Non extraits (%1)</translation>
    </message>
    <message>
        <source>Written (%1)</source>
        <translation>Écrits (%1)</translation>
    </message>
    <message>
        <source>&amp;Open Folder</source>
        <translation>&amp;Ouvrir le dossier</translation>
    </message>
</context>
<context>
    <name>desktop::ProgressWindow</name>
    <message>
        <source>Unpacking</source>
        <translation>Extraction en cours</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>&amp;Arrêter</translation>
    </message>
    <message>
        <source>Everything:</source>
        <translation>Total&#xa0;:</translation>
    </message>
    <message>
        <source>Written:</source>
        <translation>Écrits&#xa0;:</translation>
    </message>
</context>
<context>
    <name>desktop::UnpackDialog</name>
    <message>
        <source>Unpack</source>
        <translation>Extraire</translation>
    </message>
    <message>
        <source>&amp;Unpack to:</source>
        <translation>Extraire &amp;vers&#xa0;:</translation>
    </message>
    <message>
        <source>&amp;Browse…</source>
        <translation>&amp;Parcourir…</translation>
    </message>
    <message>
        <source>Ask before an &amp;existing file is replaced</source>
        <translation>&amp;Demander avant de remplacer un fichier existant</translation>
    </message>
    <message>
        <source>Everything: put all &amp;files into one folder</source>
        <translation>Tout&#xa0;: mettre tous les &amp;fichiers dans un seul dossier</translation>
    </message>
    <message>
        <source>A folder: leave out the folders &amp;above it</source>
        <translation>Un dossier&#xa0;: &amp;omettre les dossiers qui le contiennent</translation>
    </message>
    <message>
        <source>Selected files: leave &amp;out their folders</source>
        <translation>Fichiers sélectionnés&#xa0;: omettre &amp;leurs dossiers</translation>
    </message>
    <message>
        <source>Options</source>
        <translation>Options</translation>
    </message>
    <message>
        <source>U&amp;npack</source>
        <translation>&amp;Extraire</translation>
    </message>
    <message>
        <source>Unpack to</source>
        <translation>Extraire vers</translation>
    </message>
    <message>
        <source>This folder cannot be written to. Choose another one.</source>
        <translation>Impossible d’écrire dans ce dossier. Choisissez-en un autre.</translation>
    </message>
</context>
<context>
    <name>host::Reason</name>
    <message>
        <source>no such file</source>
        <translation>ce fichier n’existe pas</translation>
    </message>
    <message>
        <source>no permission to read it</source>
        <translation>pas de permission de lecture</translation>
    </message>
    <message>
        <source>it is a folder</source>
        <translation>c’est un dossier</translation>
    </message>
    <message>
        <source>not a regular file</source>
        <translation>ce n’est pas un fichier ordinaire</translation>
    </message>
    <message>
        <source>the file is empty</source>
        <translation>le fichier est vide</translation>
    </message>
    <message>
        <source>a recorded date is impossible</source>
        <translation>une date enregistrée est impossible</translation>
    </message>
    <message>
        <source>damaged: it names a partition that it lacks</source>
        <translation>endommagé&#xa0;: il nomme une partition qu’il ne contient pas</translation>
    </message>
    <message>
        <source>another program is writing to it</source>
        <translation>un autre programme est en train d’y écrire</translation>
    </message>
    <message>
        <source>a 7z archive, but the 7-Zip engine is missing; install the package p7zip-full (or 7zip with its 7z.so)</source>
        <translation>une archive 7z, mais le moteur 7-Zip est absent&#xa0;; installez le paquet p7zip-full (ou 7zip avec son 7z.so)</translation>
    </message>
    <message>
        <source>a RAR archive, but morvunp was built without the RAR engine</source>
        <translation>une archive RAR, mais morvunp a été compilé sans le moteur RAR</translation>
    </message>
    <message>
        <source>not an archive, or one whose module is missing</source>
        <translation>ce n’est pas une archive, ou son module est absent</translation>
    </message>
    <message>
        <source>not an archive that morvunp knows, or damaged</source>
        <translation>ce n’est pas une archive que morvunp connaît, ou elle est endommagée</translation>
    </message>
    <message>
        <source>the list is cut short</source>
        <translation>la liste est incomplète</translation>
    </message>
    <message>
        <source>a volume of the set is missing</source>
        <translation>un volume de l’ensemble est absent</translation>
    </message>
    <message>
        <source>the volume %1 is missing</source>
        <translation>le volume %1 est absent</translation>
    </message>
    <message>
        <source>wrong password</source>
        <translation>mot de passe incorrect</translation>
    </message>
    <message>
        <source>wrong password or damaged; the archive does not tell which</source>
        <translation>mot de passe incorrect ou archive endommagée&#xa0;; elle ne dit pas lequel des deux</translation>
    </message>
    <message>
        <source>it is encrypted and no password was given</source>
        <translation>chiffré, et aucun mot de passe n’a été donné</translation>
    </message>
    <message>
        <source>it begins in an earlier volume; open the first one</source>
        <translation>commence dans un volume précédent&#xa0;; ouvrez le premier</translation>
    </message>
    <message>
        <source>refused: unsafe name</source>
        <translation>refusé&#xa0;: nom dangereux</translation>
    </message>
    <message>
        <source>refused: a link that leads out of the folder</source>
        <translation>refusé&#xa0;: un lien qui mène hors du dossier</translation>
    </message>
    <message>
        <source>refused: a link to or copy of an item that was not unpacked</source>
        <translation>refusé&#xa0;: lien vers un élément qui n’a pas été extrait, ou copie de celui-ci</translation>
    </message>
    <message>
        <source>failed: could not be written</source>
        <translation>échec&#xa0;: impossible à écrire</translation>
    </message>
    <message>
        <source>failed: it takes more memory than there is</source>
        <translation>échec&#xa0;: demande plus de mémoire qu’il n’y en a</translation>
    </message>
    <message>
        <source>failed: a symbolic link stands in its place</source>
        <translation>échec&#xa0;: un lien symbolique occupe sa place</translation>
    </message>
    <message>
        <source>failed: a folder stands in its place</source>
        <translation>échec&#xa0;: un dossier occupe sa place</translation>
    </message>
    <message>
        <source>cut short: the archive ends before the file does</source>
        <translation>tronqué&#xa0;: l’archive se termine avant le fichier</translation>
    </message>
    <message>
        <source>interrupted</source>
        <translation>interrompu</translation>
    </message>
    <message>
        <source>not reached</source>
        <translation>non atteint</translation>
    </message>
    <message>
        <source>kept the existing file</source>
        <translation>le fichier existant a été conservé</translation>
    </message>
    <message>
        <source>failed: another program has it open</source>
        <translation>échec&#xa0;: un autre programme l’a ouvert</translation>
    </message>
    <message>
        <source>failed</source>
        <translation>échec</translation>
    </message>
    <message>
        <source>failed: something else stands in the place of its folder</source>
        <translation>échec&#xa0;: autre chose occupe la place de son dossier</translation>
    </message>
    <message>
        <source>failed: it would replace the archive itself</source>
        <translation>échec&#xa0;: il remplacerait l’archive elle-même</translation>
    </message>
    <message>
        <source>failed: its name is too long</source>
        <translation>échec&#xa0;: son nom est trop long</translation>
    </message>
    <message>
        <source>cut short: it has fewer bytes than the archive records</source>
        <translation>tronqué&#xa0;: il a moins d’octets que l’archive n’en indique</translation>
    </message>
    <message>
        <source>failed: its method of compression is not supported</source>
        <translation>échec&#xa0;: sa méthode de compression n’est pas prise en charge</translation>
    </message>
    <message>
        <source>failed: it passes a limit</source>
        <translation>échec&#xa0;: une limite est dépassée</translation>
    </message>
    <message>
        <source>failed: damaged in the archive</source>
        <translation>échec&#xa0;: endommagé dans l’archive</translation>
    </message>
    <message>
        <source>replaced by a later item with the same output path</source>
        <translation>remplacé par un élément ultérieur ayant le même chemin de sortie</translation>
    </message>
    <message>
        <source>cut short: the file ends before the archive does</source>
        <translation>tronquée&#xa0;: le fichier se termine avant l’archive</translation>
    </message>
    <message>
        <source>damaged: not all of its folders could be read</source>
        <translation>endommagée&#xa0;: tous les dossiers n’ont pas pu être lus</translation>
    </message>
    <message>
        <source>damaged: its table of files could not be read whole</source>
        <translation>endommagée&#xa0;: la table des fichiers n’a pas pu être lue en entier</translation>
    </message>
    <message>
        <source>damaged: the engine found errors in its headers</source>
        <translation>endommagée&#xa0;: le moteur a trouvé des erreurs dans les en-têtes</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>Shows and unpacks 7z, cabinet, ISO/UDF and RAR archives.</source>
        <translation>Affiche et extrait les archives 7z, cabinet, ISO/UDF et RAR.</translation>
    </message>
    <message>
        <source>The archive to open.</source>
        <translation>L’archive à ouvrir.</translation>
    </message>
</context>
</TS>
