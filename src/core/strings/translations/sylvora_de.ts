<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="en">
<context>
    <name>Errors</name>
    <message>
        <source>Error Opening World</source>
        <translation>Die Welt konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>Error Saving World</source>
        <translation>Die Welt konnte nicht gespeichert werden.</translation>
    </message>
    <message>
        <source>Error Saving Named World</source>
        <translation>„%1“ konnte nicht gespeichert werden.</translation>
    </message>
    <message>
        <source>Error Saving World Missing File</source>
        <translation>„%1“ konnte nicht gespeichert werden: „%2“ fehlt.</translation>
    </message>
    <message>
        <source>Previous Version Kept</source>
        <translation>Das Laufwerk konnte nicht bestätigen, dass die neue Version gespeichert ist. Die vorherige Version der Welt bleibt deshalb unter „%1“ erhalten.</translation>
    </message>
    <message>
        <source>Status -34</source>
        <translation>das Laufwerk ist voll</translation>
    </message>
    <message>
        <source>Status -35</source>
        <translation>das Laufwerk, auf dem sie liegt, ist nicht angeschlossen</translation>
    </message>
    <message>
        <source>Status -36</source>
        <translation>eine Datei konnte nicht gelesen oder geschrieben werden</translation>
    </message>
    <message>
        <source>Status -43</source>
        <translation>eine benötigte Datei fehlt</translation>
    </message>
    <message>
        <source>Status -44</source>
        <translation>das Laufwerk ist schreibgeschützt</translation>
    </message>
    <message>
        <source>Status -48</source>
        <translation>unter diesem Namen ist bereits etwas vorhanden</translation>
    </message>
    <message>
        <source>Status -50</source>
        <translation>ein Name oder Wert ist nicht zulässig</translation>
    </message>
    <message>
        <source>Status -54</source>
        <translation>der Ordner oder die Datei ist für Sie schreibgeschützt</translation>
    </message>
    <message>
        <source>Status -128</source>
        <translation>der Vorgang wurde unterbrochen</translation>
    </message>
    <message>
        <source>Status -120</source>
        <translation>ein benötigter Ordner fehlt</translation>
    </message>
    <message>
        <source>Status -1</source>
        <translation>die Beschreibung (data.plist) ist beschädigt oder keine Eigenschaftsliste</translation>
    </message>
    <message>
        <source>Status 32767</source>
        <translation>die Welt hat zu viele Klänge, um sie gleichzeitig abzuspielen</translation>
    </message>
    <message>
        <source>World Could Not Be Opened</source>
        <extracomment>%1 is the world's name</extracomment>
        <translation>„%1“ konnte nicht geöffnet werden.</translation>
    </message>
    <message>
        <source>World Could Not Be Opened Because</source>
        <extracomment>%1 is the world's name, %2 the reason</extracomment>
        <translation>„%1“ konnte nicht geöffnet werden: %2</translation>
    </message>
    <message>
        <source>Reason Damaged Data File</source>
        <translation>Die Datendatei ist beschädigt.</translation>
    </message>
    <message>
        <source>Reason Missing Data File</source>
        <translation>Die Datendatei fehlt.</translation>
    </message>
    <message>
        <source>Reason Missing Sound Folder</source>
        <extracomment>%1 is the folder's name</extracomment>
        <translation>Der Ordner „%1“ fehlt.</translation>
    </message>
    <message>
        <source>Reason Missing Package</source>
        <translation>Die Welt ist nicht mehr vorhanden.</translation>
    </message>
    <message>
        <source>Unexplained Status</source>
        <extracomment>%1 is the status number</extracomment>
        <translation>Fehler %1</translation>
    </message>
</context>
<context>
    <name>Misc</name>
    <message>
        <source>Untitled SaveAs Filename</source>
        <translation>Unbenannt</translation>
    </message>
    <message>
        <source>Environment Sound Group Name</source>
        <extracomment>%1 is the number of groups created so far plus one</extracomment>
        <translation>Gruppe %1</translation>
    </message>
    <message>
        <source>No Picture File Selected</source>
        <translation>Keine Bilddatei ausgewählt</translation>
    </message>
    <message>
        <source>Select a picture file to represent this world</source>
        <translation>Wählen Sie eine Bilddatei, die diese Welt darstellt</translation>
    </message>
    <message>
        <source>Select Looping Sound Files</source>
        <translation>Loop-Klangdateien auswählen</translation>
    </message>
    <message>
        <source>Select Environment Sound Files</source>
        <translation>Umgebungsklangdateien auswählen</translation>
    </message>
    <message>
        <source>World Info</source>
        <extracomment>%1 is the name of the world</extracomment>
        <translation>Informationen zu %1</translation>
    </message>
    <message>
        <source>Untitled World Info</source>
        <translation>Informationen zur unbenannten Welt</translation>
    </message>
    <message>
        <source>CreatingAWorld.html</source>
        <translation>CreatingAWorld.html</translation>
    </message>
    <message>
        <source>Percent</source>
        <extracomment>%1 is a whole number of percent</extracomment>
        <translation>%1 %</translation>
    </message>
    <message>
        <source>Ask Save Changes Closing</source>
        <extracomment>%1 is the world's display name</extracomment>
        <translation>Möchten Sie die Änderungen an der Welt „%1“ speichern, bevor Sie sie schließen?</translation>
    </message>
    <message>
        <source>Ask Save Changes Quitting</source>
        <extracomment>%1 is the world's display name</extracomment>
        <translation>Möchten Sie die Änderungen an der Welt „%1“ speichern, bevor Sie Sylvora beenden?</translation>
    </message>
    <message>
        <source>Ask Save Changes Detail</source>
        <translation>Ihre Änderungen gehen verloren, wenn Sie sie nicht speichern.</translation>
    </message>
    <message>
        <source>Don&apos;t Save</source>
        <translation>Nicht speichern</translation>
    </message>
    <message>
        <source>Open World</source>
        <translation>Welt öffnen</translation>
    </message>
    <message>
        <source>Save World As</source>
        <translation>Welt speichern unter</translation>
    </message>
    <message>
        <source>Replace World</source>
        <translation>Welt ersetzen</translation>
    </message>
    <message>
        <source>Replace World Question</source>
        <extracomment>%1 is the file name of the package already there</extracomment>
        <translation>„%1“ ist bereits vorhanden. Möchten Sie es ersetzen?</translation>
    </message>
    <message>
        <source>Restore Unsaved World Question</source>
        <translation>Sylvora wurde mit nicht gespeicherten Änderungen an der Welt „%1“ beendet. Möchten Sie diese Änderungen wiederherstellen?</translation>
    </message>
    <message>
        <source>Restore Unsaved World Detail</source>
        <translation>Wenn Sie sie nicht wiederherstellen, gehen die Änderungen verloren.</translation>
    </message>
    <message>
        <source>Restore Unsaved World</source>
        <translation>Wiederherstellen</translation>
    </message>
    <message>
        <source>Discard Unsaved World</source>
        <translation>Änderungen verwerfen</translation>
    </message>
    <message>
        <source>Restored Without Sounds</source>
        <translation>Die Änderungen sind wiederhergestellt, aber %1 Klänge der Welt sind nicht mehr auf dem Laufwerk und wurden weggelassen.</translation>
    </message>
    <message>
        <source>Drop Picture Here</source>
        <translation>Bild hier ablegen</translation>
    </message>
</context>
<context>
    <name>AboutWindow</name>
    <message>
        <source>About Sylvora</source>
        <translation>Über Sylvora</translation>
    </message>
    <message>
        <source>Ambient sound worlds</source>
        <translation>Klangwelten zum Eintauchen</translation>
    </message>
    <message>
        <source>Write to the Sylvora project</source>
        <translation>Dem Sylvora-Projekt schreiben</translation>
    </message>
    <message>
        <source>Open the Sylvora web site</source>
        <translation>Die Website von Sylvora öffnen</translation>
    </message>
</context>
<context>
    <name>GetInfoWindow</name>
    <message>
        <source>World Info</source>
        <translation>Weltinformationen</translation>
    </message>
    <message>
        <source>Show or hide the world&apos;s name and description</source>
        <translation>Name und Beschreibung der Welt ein- oder ausblenden</translation>
    </message>
</context>
<context>
    <name>MixerWindow</name>
    <message>
        <source>Mixer</source>
        <translation>Mixer</translation>
    </message>
    <message>
        <source>This world has no sounds yet. Add them in the World Editor.</source>
        <translation>Diese Welt hat noch keine Klänge. Fügen Sie sie im Welteditor hinzu.</translation>
    </message>
</context>
<context>
    <name>QFileDialog</name>
    <message>
        <source>Choose</source>
        <translation>Auswählen</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>%1 — %2</source>
        <translation>%1 — %2</translation>
    </message>
    <message>
        <source>Mixer</source>
        <translation>Mixer</translation>
    </message>
    <message>
        <source>World Editor</source>
        <translation>Welteditor</translation>
    </message>
    <message>
        <source>Sylvora Help</source>
        <translation>Sylvora-Hilfe</translation>
    </message>
    <message>
        <source>Silent</source>
        <translation>Stumm</translation>
    </message>
    <message>
        <source>Full</source>
        <translation>Voll</translation>
    </message>
    <message>
        <source>Level %1</source>
        <translation>Stufe %1</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>&amp;New World</source>
        <translation>&amp;Neue Welt</translation>
    </message>
    <message>
        <source>&amp;Open World…</source>
        <translation>Welt ö&amp;ffnen…</translation>
    </message>
    <message>
        <source>&amp;Close Window</source>
        <translation>Fenster sch&amp;ließen</translation>
    </message>
    <message>
        <source>&amp;Save</source>
        <translation>&amp;Speichern</translation>
    </message>
    <message>
        <source>Save &amp;As…</source>
        <translation>Speichern &amp;unter…</translation>
    </message>
    <message>
        <source>&amp;Quit</source>
        <translation>&amp;Beenden</translation>
    </message>
    <message>
        <source>&amp;Undo</source>
        <translation>&amp;Rückgängig</translation>
    </message>
    <message>
        <source>Cu&amp;t</source>
        <translation>&amp;Ausschneiden</translation>
    </message>
    <message>
        <source>&amp;Copy</source>
        <translation>&amp;Kopieren</translation>
    </message>
    <message>
        <source>&amp;Paste</source>
        <translation>&amp;Einfügen</translation>
    </message>
    <message>
        <source>&amp;Delete</source>
        <translation>&amp;Löschen</translation>
    </message>
    <message>
        <source>Select &amp;All</source>
        <translation>Alles aus&amp;wählen</translation>
    </message>
    <message>
        <source>&amp;Louder</source>
        <translation>&amp;Lauter</translation>
    </message>
    <message>
        <source>&amp;Softer</source>
        <translation>Lei&amp;ser</translation>
    </message>
    <message>
        <source>%1 — %2</source>
        <translation>%1 — %2</translation>
    </message>
    <message>
        <source>&amp;File</source>
        <translation>&amp;Datei</translation>
    </message>
    <message>
        <source>&amp;Edit</source>
        <translation>&amp;Bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Volume</source>
        <translation>&amp;Lautstärke</translation>
    </message>
    <message>
        <source>&amp;Known Worlds</source>
        <translation>Be&amp;kannte Welten</translation>
    </message>
    <message>
        <source>&amp;World</source>
        <translation>&amp;Welt</translation>
    </message>
    <message>
        <source>&amp;Help</source>
        <translation>&amp;Hilfe</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Lautstärke</translation>
    </message>
    <message>
        <source>Get &amp;Info</source>
        <translation>&amp;Informationen</translation>
    </message>
    <message>
        <source>&amp;Edit World</source>
        <translation>Welt &amp;bearbeiten</translation>
    </message>
    <message>
        <source>&amp;Mixer</source>
        <translation>&amp;Mixer</translation>
    </message>
    <message>
        <source>Sylvora &amp;Help</source>
        <translation>Sylvora-&amp;Hilfe</translation>
    </message>
    <message>
        <source>&amp;About Sylvora</source>
        <translation>Über &amp;Sylvora</translation>
    </message>
    <message>
        <source>Open World…</source>
        <translation>Welt öffnen…</translation>
    </message>
    <message>
        <source>New World</source>
        <translation>Neue Welt</translation>
    </message>
    <message>
        <source>Start with the desktop session</source>
        <translation>Mit der Desktop-Sitzung starten</translation>
    </message>
    <message>
        <source>Show Sylvora</source>
        <translation>Sylvora zeigen</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Make a world from the sounds in “%1”?</source>
        <translation>Aus den Klängen in „%1“ eine Welt machen?</translation>
    </message>
    <message>
        <source>Sounds of 20 seconds or more become loop sounds, shorter ones environment sounds heard now and then, and a picture in the folder becomes the world&apos;s picture. The world is saved beside the folder as “%1” and opened.</source>
        <translation>Klänge ab 20 Sekunden werden zu Loop-Klängen, kürzere zu Umgebungsklängen, die ab und zu erklingen, und ein Bild im Ordner wird zum Bild der Welt. Die Welt wird neben dem Ordner als „%1“ gespeichert und geöffnet.</translation>
    </message>
    <message>
        <source>These files are left out: %1.</source>
        <translation>Diese Dateien bleiben außen vor: %1.</translation>
    </message>
    <message>
        <source>Make World</source>
        <translation>Welt erstellen</translation>
    </message>
    <message>
        <source>The world could not be saved as “%1”.</source>
        <translation>Die Welt konnte nicht als „%1“ gespeichert werden.</translation>
    </message>
</context>
<context>
    <name>WorldEditorWindow</name>
    <message>
        <source>World Editor</source>
        <translation>Welteditor</translation>
    </message>
    <message>
        <source>Loop Sounds</source>
        <translation>Loop-Klänge</translation>
    </message>
    <message>
        <source>Loop sounds play without end, one at a time: the next one is picked at random and crossfades in before the current one ends. Double-click a sound to hear it alone. You can also drop sound files on the list.</source>
        <translation>Loop-Klänge spielen endlos, einer nach dem anderen: Der nächste wird zufällig gewählt und blendet über, bevor der aktuelle endet. Doppelklicken Sie auf einen Klang, um ihn allein zu hören. Sie können Klangdateien auch auf die Liste ziehen.</translation>
    </message>
    <message>
        <source>Add Loop Sounds…</source>
        <translation>Loop-Klänge hinzufügen…</translation>
    </message>
    <message>
        <source>Choose sound files to add as loop sounds</source>
        <translation>Klangdateien wählen, die als Loop-Klänge hinzukommen</translation>
    </message>
    <message>
        <source>Remove</source>
        <translation>Entfernen</translation>
    </message>
    <message>
        <source>Remove the selected loop sounds</source>
        <translation>Die ausgewählten Loop-Klänge entfernen</translation>
    </message>
    <message>
        <source>Volume of the selected sound</source>
        <translation>Lautstärke des ausgewählten Klangs</translation>
    </message>
    <message>
        <source>Volume of the selected loop sound</source>
        <translation>Lautstärke des ausgewählten Loop-Klangs</translation>
    </message>
    <message>
        <source>Crossfade</source>
        <translation>Überblendung</translation>
    </message>
    <message>
        <source>How long two loop sounds overlap when one follows another</source>
        <translation>Wie lange sich zwei Loop-Klänge überlappen, wenn einer auf den anderen folgt</translation>
    </message>
    <message>
        <source>Crossfade in seconds</source>
        <translation>Überblendung in Sekunden</translation>
    </message>
    <message>
        <source>seconds</source>
        <translation>Sekunden</translation>
    </message>
    <message>
        <source>Environment Sounds</source>
        <translation>Umgebungsklänge</translation>
    </message>
    <message>
        <source>Environment sounds play now and then, after a random wait and at a random volume. Put sounds in a group to have them take turns: a group plays one of its sounds at a time. Drag a sound onto a group to move it there; double-click a group to rename it, a sound to hear it.</source>
        <translation>Umgebungsklänge erklingen ab und zu, nach einer zufälligen Wartezeit und in zufälliger Lautstärke. Legen Sie Klänge in eine Gruppe, damit sie sich abwechseln: Eine Gruppe spielt jeweils einen ihrer Klänge. Ziehen Sie einen Klang auf eine Gruppe, um ihn dorthin zu verschieben; doppelklicken Sie auf eine Gruppe, um sie umzubenennen, und auf einen Klang, um ihn zu hören.</translation>
    </message>
    <message>
        <source>Add Environment Sounds…</source>
        <translation>Umgebungsklänge hinzufügen…</translation>
    </message>
    <message>
        <source>Choose sound files; they join the selected group</source>
        <translation>Klangdateien wählen; sie kommen in die ausgewählte Gruppe</translation>
    </message>
    <message>
        <source>New Group</source>
        <translation>Neue Gruppe</translation>
    </message>
    <message>
        <source>Make a group of sounds that take turns</source>
        <translation>Eine Gruppe von Klängen anlegen, die sich abwechseln</translation>
    </message>
    <message>
        <source>Remove the selected groups and sounds</source>
        <translation>Die ausgewählten Gruppen und Klänge entfernen</translation>
    </message>
    <message>
        <source>Minimum</source>
        <translation>Minimum</translation>
    </message>
    <message>
        <source>The quietest this sound plays</source>
        <translation>Die geringste Lautstärke dieses Klangs</translation>
    </message>
    <message>
        <source>Maximum</source>
        <translation>Maximum</translation>
    </message>
    <message>
        <source>The loudest this sound plays</source>
        <translation>Die höchste Lautstärke dieses Klangs</translation>
    </message>
    <message>
        <source>Wait between plays</source>
        <translation>Wartezeit zwischen den Einsätzen</translation>
    </message>
    <message>
        <source>The shortest wait between two plays</source>
        <translation>Die kürzeste Wartezeit zwischen zwei Einsätzen</translation>
    </message>
    <message>
        <source>Shortest wait in seconds</source>
        <translation>Kürzeste Wartezeit in Sekunden</translation>
    </message>
    <message>
        <source>s</source>
        <translation>s</translation>
    </message>
    <message>
        <source>The longest wait between two plays</source>
        <translation>Die längste Wartezeit zwischen zwei Einsätzen</translation>
    </message>
    <message>
        <source>Longest wait in seconds</source>
        <translation>Längste Wartezeit in Sekunden</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>The picture represents the world in the Get Info window. Drop an image file on the well or choose one.</source>
        <translation>Das Bild steht im Informationsfenster für die Welt. Ziehen Sie eine Bilddatei auf das Feld oder wählen Sie eine aus.</translation>
    </message>
    <message>
        <source>No Picture File Selected</source>
        <translation>Keine Bilddatei ausgewählt</translation>
    </message>
    <message>
        <source>Choose Picture…</source>
        <translation>Bild auswählen…</translation>
    </message>
    <message>
        <source>Choose an image file for this world</source>
        <translation>Eine Bilddatei für diese Welt auswählen</translation>
    </message>
    <message>
        <source>Info</source>
        <translation>Info</translation>
    </message>
    <message>
        <source>Name:</source>
        <translation>Name:</translation>
    </message>
    <message>
        <source>The world&apos;s name</source>
        <translation>Der Name der Welt</translation>
    </message>
    <message>
        <source>Author:</source>
        <translation>Autor:</translation>
    </message>
    <message>
        <source>Who made it</source>
        <translation>Wer sie gemacht hat</translation>
    </message>
    <message>
        <source>Description:</source>
        <translation>Beschreibung:</translation>
    </message>
    <message>
        <source>What a listener will hear</source>
        <translation>Was man zu hören bekommt</translation>
    </message>
    <message>
        <source>Changes are heard at once. Save the world from the File menu.</source>
        <translation>Änderungen sind sofort zu hören. Speichern Sie die Welt über das Menü „Datei“.</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>How to build a world</source>
        <translation>Wie man eine Welt baut</translation>
    </message>
</context>
<context>
    <name>WorldFromFolder</name>
    <message>
        <source>the world&apos;s picture</source>
        <translation>das Bild der Welt</translation>
    </message>
    <message>
        <source>cannot be read</source>
        <translation>nicht lesbar</translation>
    </message>
    <message>
        <source>a world holds at most %1 loop sounds</source>
        <translation>eine Welt fasst höchstens %1 Loop-Klänge</translation>
    </message>
    <message>
        <source>cannot be played</source>
        <translation>nicht abspielbar</translation>
    </message>
    <message>
        <source>%1 s or longer: plays without end</source>
        <translation>%1 s oder länger: spielt endlos</translation>
    </message>
    <message>
        <source>a world holds at most %1 environment sounds</source>
        <translation>eine Welt fasst höchstens %1 Umgebungsklänge</translation>
    </message>
    <message>
        <source>shorter than %1 s: heard every %2 to %3 s</source>
        <translation>kürzer als %1 s: erklingt alle %2 bis %3 s</translation>
    </message>
    <message>
        <source>&apos;%1&apos; is not a folder</source>
        <translation>„%1“ ist kein Ordner</translation>
    </message>
    <message>
        <source>a folder: only the files directly inside are used</source>
        <translation>ein Ordner: Nur die Dateien direkt darin werden verwendet</translation>
    </message>
    <message>
        <source>another picture: the world has one</source>
        <translation>ein weiteres Bild: Die Welt hat schon eines</translation>
    </message>
    <message>
        <source>a picture that cannot be decoded</source>
        <translation>ein Bild, das sich nicht lesen lässt</translation>
    </message>
    <message>
        <source>not a sound file that can be decoded</source>
        <translation>keine lesbare Klangdatei</translation>
    </message>
    <message>
        <source>holds no sound</source>
        <translation>enthält keinen Klang</translation>
    </message>
    <message>
        <source>no sound file in &apos;%1&apos; could be decoded</source>
        <translation>keine Klangdatei in „%1“ ließ sich lesen</translation>
    </message>
    <message>
        <source>a world package&apos;s name ends in .%1: &apos;%2&apos;</source>
        <translation>der Name eines Weltpakets endet auf .%1: „%2“</translation>
    </message>
    <message>
        <source>&apos;%1&apos; already exists</source>
        <translation>„%1“ ist bereits vorhanden</translation>
    </message>
    <message>
        <source>the folder &apos;%1&apos; does not exist</source>
        <translation>der Ordner „%1“ existiert nicht</translation>
    </message>
    <message>
        <source>the world could not be saved as &apos;%1&apos;: %2</source>
        <translation>die Welt konnte nicht als „%1“ gespeichert werden: %2</translation>
    </message>
</context>
<context>
    <name>sylvora</name>
    <message>
        <source>Usage: sylvora [--background] [WORLD.sylvora ...]
Plays ambient sound worlds and lets you build them. Opens the first world package given,
or else the world that was playing when Sylvora last quit.

  --background   start in the tray only, as the desktop session&apos;s autostart does
                 (where the desktop has no tray, the window shows all the same)
  -h, --help     print this help and exit
  -v, --version  print the version and exit
  --             every argument after it is a world package, even one that starts with &quot;-&quot;
</source>
        <translation>Aufruf: sylvora [--background] [WELT.sylvora ...]
Spielt Ambient-Klangwelten und lässt Sie eigene bauen. Öffnet das erste angegebene Weltpaket,
sonst die Welt, die lief, als Sylvora zuletzt beendet wurde.

  --background   nur im Infobereich starten, wie beim automatischen Start mit der Sitzung
                 (hat der Desktop keinen Infobereich, erscheint trotzdem das Fenster)
  -h, --help     diese Hilfe ausgeben und beenden
  -v, --version  die Version ausgeben und beenden
  --             jedes Argument danach ist ein Weltpaket, auch wenn es mit „-“ beginnt
</translation>
    </message>
    <message>
        <source>sylvora: unknown option %1</source>
        <translation>sylvora: unbekannte Option %1</translation>
    </message>
</context>
<context>
    <name>sylvora::app::ControlStrip</name>
    <message>
        <source>%1 s</source>
        <translation>%1 s</translation>
    </message>
    <message>
        <source>%1 min</source>
        <translation>%1 min</translation>
    </message>
    <message>
        <source>Volume</source>
        <translation>Lautstärke</translation>
    </message>
    <message>
        <source>Sleep Timer</source>
        <translation>Einschlaftimer</translation>
    </message>
    <message>
        <source>Paused</source>
        <translation>Angehalten</translation>
    </message>
    <message>
        <source>Sleeping in %1</source>
        <translation>Endet in %1</translation>
    </message>
    <message>
        <source>Playing</source>
        <translation>Spielt</translation>
    </message>
    <message>
        <source>Pause</source>
        <translation>Anhalten</translation>
    </message>
    <message>
        <source>Play</source>
        <translation>Abspielen</translation>
    </message>
    <message>
        <source>Sleep</source>
        <translation>Timer</translation>
    </message>
    <message>
        <source>No sound server — waiting</source>
        <translation>Kein Soundserver – wartet</translation>
    </message>
    <message>
        <source>cannot read: %1</source>
        <translation>nicht lesbar: %1</translation>
    </message>
</context>
<context>
    <name>sylvora::app::MixerModel</name>
    <message>
        <source>Loop Sounds</source>
        <translation>Loop-Klänge</translation>
    </message>
    <message>
        <source>Environment Sounds</source>
        <translation>Umgebungsklänge</translation>
    </message>
    <message>
        <source>Playing now</source>
        <translation>Klingt gerade</translation>
    </message>
    <message>
        <source>Just heard</source>
        <translation>Eben gehört</translation>
    </message>
    <message>
        <source>Sound</source>
        <translation>Klang</translation>
    </message>
    <message>
        <source>Level</source>
        <translation>Pegel</translation>
    </message>
</context>
<context>
    <name>sylvora::app::SleepTimerMenu</name>
    <message>
        <source>Sleep Timer</source>
        <translation>Einschlaftimer</translation>
    </message>
    <message>
        <source>Off</source>
        <translation>Aus</translation>
    </message>
    <message>
        <source>%1 Minutes</source>
        <translation>%1 Minuten</translation>
    </message>
    <message>
        <source>Sleep timer: fading out</source>
        <translation>Einschlaftimer: wird ausgeblendet</translation>
    </message>
    <message>
        <source>Sleep timer: %1 s left</source>
        <translation>Einschlaftimer: noch %1 s</translation>
    </message>
    <message>
        <source>Sleep timer: %1 min left</source>
        <translation>Einschlaftimer: noch %1 min</translation>
    </message>
</context>
<context>
    <name>sylvora::app::TrayIcon</name>
    <message>
        <source>No sound server — waiting</source>
        <translation>Kein Soundserver – wartet</translation>
    </message>
</context>
<context>
    <name>sylvora::app::WorldOpenDialog</name>
    <message>
        <source>Open</source>
        <translation>Öffnen</translation>
    </message>
</context>
</TS>
