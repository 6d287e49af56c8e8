<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>AboutPanel</name>
    <message>
        <source>About ordovan+</source>
        <translation>Über ordovan+</translation>
    </message>
    <message>
        <source>Version %1</source>
        <translation>Version %1</translation>
    </message>
    <message>
        <source>Careful folder organizing for macOS.</source>
        <translation>Räumt Ordner auf, mit Bedacht.</translation>
    </message>
</context>
<context>
    <name>Banner</name>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Show Problems</source>
        <translation>Probleme zeigen</translation>
    </message>
    <message>
        <source>Hide Problems</source>
        <translation>Ausblenden</translation>
    </message>
    <message>
        <source>Problems</source>
        <translation>Probleme</translation>
    </message>
</context>
<context>
    <name>BigFilesModel</name>
    <message>
        <source>Largest files, biggest first</source>
        <translation>Größte Dateien, die größte zuerst</translation>
    </message>
    <message>
        <source>Leave Out of Trash</source>
        <translation>Nicht in den Papierkorb</translation>
    </message>
    <message>
        <source>Select for Trash</source>
        <translation>Für den Papierkorb auswählen</translation>
    </message>
    <message>
        <source>Quick Look</source>
        <translation>Schnellansicht</translation>
    </message>
    <message>
        <source>Reveal in Finder</source>
        <translation>Im Dateimanager zeigen</translation>
    </message>
</context>
<context>
    <name>BigFilesView</name>
    <message>
        <source>Any size</source>
        <translation>Alle Größen</translation>
    </message>
    <message>
        <source>Over 10 MB</source>
        <translation>Über 10 MB</translation>
    </message>
    <message>
        <source>Over 100 MB</source>
        <translation>Über 100 MB</translation>
    </message>
    <message>
        <source>Over 1 GB</source>
        <translation>Über 1 GB</translation>
    </message>
    <message>
        <source>Preview a folder first</source>
        <translation>Zuerst braucht es eine Vorschau</translation>
    </message>
    <message>
        <source>Big Files uses the sizes from your current preview.</source>
        <translation>Große Dateien nutzt die Größen aus der aktuellen Vorschau.</translation>
    </message>
    <message>
        <source>Choose Folder…</source>
        <translation>Ordner wählen…</translation>
    </message>
    <message>
        <source>Find Duplicates</source>
        <translation>Duplikate suchen</translation>
    </message>
    <message>
        <source>to see the space held in duplicate copies</source>
        <translation>zeigt, wie viel Platz Kopien belegen</translation>
    </message>
    <message>
        <source>Search big files</source>
        <translation>Große Dateien durchsuchen</translation>
    </message>
    <message>
        <source>Smallest size</source>
        <translation>Mindestgröße</translation>
    </message>
    <message>
        <source>Kind of file</source>
        <translation>Art der Dateien</translation>
    </message>
    <message>
        <source>Installers (.dmg, .pkg) are often safe to remove once the app is installed. Organize sends them to %1/Installers so you can review them in one place.</source>
        <translation>Installationspakete (.dmg, .pkg) braucht man nach der Installation meist nicht mehr. Einsortiert liegen sie in %1/Installers, wo Sie sie gesammelt durchsehen können.</translation>
    </message>
    <message>
        <source>Largest files, biggest first</source>
        <translation>Größte Dateien, die größte zuerst</translation>
    </message>
    <message>
        <source>Return selects a file for the Trash, Space shows what is in it.</source>
        <translation>Die Eingabetaste wählt eine Datei für den Papierkorb aus, die Leertaste zeigt ihren Inhalt.</translation>
    </message>
    <message>
        <source>None of the largest files matches the search.</source>
        <translation>Keine der größten Dateien passt zur Suche.</translation>
    </message>
    <message>
        <source>Move to Trash…</source>
        <translation>In den Papierkorb…</translation>
    </message>
    <message>
        <source>Big Files</source>
        <translation>Große Dateien</translation>
    </message>
    <message>
        <source>The largest files in this folder. Looking changes nothing; files you tick and confirm go to the Trash, and you can put them back.</source>
        <translation>Die größten Dateien dieses Ordners. Ansehen ändert nichts; was Sie auswählen und bestätigen, kommt in den Papierkorb und lässt sich zurücklegen.</translation>
    </message>
    <message>
        <source>Previewing — reading metadata only…</source>
        <translation>Vorschau – nur Metadaten werden gelesen…</translation>
    </message>
    <message>
        <source>All kinds</source>
        <translation>Alle Arten</translation>
    </message>
    <message numerus="yes">
        <source>largest files</source>
        <translation>
            <numerusform>größte Datei</numerusform>
            <numerusform>größte Dateien</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in the largest files</source>
        <translation>
            <numerusform>in der größten Datei</numerusform>
            <numerusform>in den größten Dateien</numerusform>
        </translation>
    </message>
    <message>
        <source>in duplicate copies</source>
        <translation>in doppelten Kopien</translation>
    </message>
    <message>
        <source>Checking each file again, then moving files to the Trash…</source>
        <translation>Dateien werden geprüft und in den Papierkorb gelegt…</translation>
    </message>
    <message>
        <source>Tick files to clean up. Trashed files can be put back from the Recovery Center.</source>
        <translation>Wählen Sie aus, was weg kann. Zurücklegen lässt es sich über die Wiederherstellung.</translation>
    </message>
    <message>
        <source>ticked · %1</source>
        <extracomment>What follows &quot;3 files&quot;: they are ticked, and their size</extracomment>
        <translation>ausgewählt · %1</translation>
    </message>
    <message numerus="yes">
        <source>%1 of them not shown</source>
        <translation>
            <numerusform>davon %1 nicht zu sehen</numerusform>
            <numerusform>davon %1 nicht zu sehen</numerusform>
        </translation>
    </message>
    <message>
        <source>Tick at least one file first.</source>
        <translation>Wählen Sie zuerst mindestens eine Datei aus.</translation>
    </message>
    <message>
        <source>Moves the ticked files to the Trash. You will be asked to confirm.</source>
        <translation>Legt die ausgewählten Dateien in den Papierkorb. Sie werden vorher gefragt.</translation>
    </message>
    <message>
        <source>This folder has no files.</source>
        <translation>Dieser Ordner enthält keine Dateien.</translation>
    </message>
    <message>
        <source>Try a smaller size filter.</source>
        <translation>Versuchen Sie es mit einer kleineren Mindestgröße.</translation>
    </message>
    <message>
        <source>No files here</source>
        <translation>Keine Dateien</translation>
    </message>
    <message>
        <source>No files this size</source>
        <translation>Keine Dateien dieser Größe</translation>
    </message>
    <message numerus="yes">
        <source>Move %1 files to the Trash?</source>
        <translation>
            <numerusform>%1 Datei in den Papierkorb legen?</numerusform>
            <numerusform>%1 Dateien in den Papierkorb legen?</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 (%2)</source>
        <extracomment>A file and its size</extracomment>
        <translation>%1 (%2)</translation>
    </message>
    <message>
        <source>%1 goes to the macOS Trash, not deleted. Each file is checked again first; anything that changed is left alone. Put files back from the Recovery Center.</source>
        <translation>%1: kommt in den Papierkorb und wird nicht gelöscht. Jede Datei wird vorher noch einmal geprüft; was sich geändert hat, bleibt liegen. Zurücklegen können Sie die Dateien über die Wiederherstellung.</translation>
    </message>
    <message numerus="yes">
        <source>Move %1 files to Trash</source>
        <translation>
            <numerusform>%1 Datei in den Papierkorb</numerusform>
            <numerusform>%1 Dateien in den Papierkorb</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Category</name>
    <message>
        <source>Documents</source>
        <translation>Dokumente</translation>
    </message>
    <message>
        <source>Spreadsheets</source>
        <translation>Tabellen</translation>
    </message>
    <message>
        <source>Images</source>
        <translation>Bilder</translation>
    </message>
    <message>
        <source>Design</source>
        <translation>Gestaltung</translation>
    </message>
    <message>
        <source>Videos</source>
        <translation>Videos</translation>
    </message>
    <message>
        <source>Audio</source>
        <translation>Audio</translation>
    </message>
    <message>
        <source>Archives</source>
        <translation>Archive</translation>
    </message>
    <message>
        <source>Installers</source>
        <translation>Installationspakete</translation>
    </message>
    <message>
        <source>Code</source>
        <translation>Quelltext</translation>
    </message>
    <message>
        <source>Fonts</source>
        <translation>Schriften</translation>
    </message>
    <message>
        <source>Books</source>
        <translation>Bücher</translation>
    </message>
    <message>
        <source>Other</source>
        <translation>Sonstige</translation>
    </message>
</context>
<context>
    <name>CommandAvailability</name>
    <message>
        <source>The preview is not ready yet.</source>
        <translation>Die Vorschau ist noch nicht fertig.</translation>
    </message>
    <message>
        <source>Preview a folder first.</source>
        <translation>Öffnen Sie zuerst die Vorschau eines Ordners.</translation>
    </message>
    <message>
        <source>There is nothing to organize.</source>
        <translation>Es gibt nichts einzusortieren.</translation>
    </message>
    <message>
        <source>Tick at least one file first.</source>
        <translation>Wählen Sie zuerst mindestens eine Datei aus.</translation>
    </message>
    <message>
        <source>Nothing was organized in this folder that could be undone.</source>
        <translation>In diesem Ordner wurde nichts einsortiert, was sich rückgängig machen ließe.</translation>
    </message>
    <message>
        <source>The search is going on.</source>
        <translation>Die Suche läuft.</translation>
    </message>
    <message>
        <source>Files are being moved right now.</source>
        <translation>Gerade werden Dateien verschoben.</translation>
    </message>
    <message>
        <source>Answer the question first.</source>
        <translation>Beantworten Sie zuerst die Frage.</translation>
    </message>
    <message>
        <source>This account has no Downloads folder.</source>
        <translation>Dieses Konto hat keinen Ordner für Downloads.</translation>
    </message>
</context>
<context>
    <name>ContentNotices</name>
    <message>
        <source>Show Files</source>
        <translation>Dateien zeigen</translation>
    </message>
    <message>
        <source>Hide Files</source>
        <translation>Ausblenden</translation>
    </message>
    <message>
        <source>It worked in “%1”.</source>
        <translation>Er arbeitete in „%1“.</translation>
    </message>
    <message>
        <source>“%1” was not opened; choose it again when that has finished.</source>
        <translation>„%1“ wurde nicht geöffnet; wählen Sie den Ordner danach noch einmal.</translation>
    </message>
    <message>
        <source>Only a folder can be previewed. “%1” was not opened.</source>
        <translation>Eine Vorschau gibt es nur von Ordnern. „%1“ wurde nicht geöffnet.</translation>
    </message>
    <message>
        <source>Files</source>
        <translation>Dateien</translation>
    </message>
</context>
<context>
    <name>ContentView</name>
    <message numerus="yes">
        <source>%1 proposed</source>
        <translation>
            <numerusform>%1 vorgeschlagen</numerusform>
            <numerusform>%1 vorgeschlagen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 groups</source>
        <translation>
            <numerusform>%1 Gruppe</numerusform>
            <numerusform>%1 Gruppen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 items to recover</source>
        <translation>
            <numerusform>%1 Objekt lässt sich zurücklegen</numerusform>
            <numerusform>%1 Objekte lassen sich zurücklegen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 rules</source>
        <translation>
            <numerusform>%1 Regel</numerusform>
            <numerusform>%1 Regeln</numerusform>
        </translation>
    </message>
    <message>
        <source>Only a folder can be previewed.</source>
        <translation>Eine Vorschau gibt es nur von Ordnern.</translation>
    </message>
</context>
<context>
    <name>DropOverlay</name>
    <message>
        <source>Drop a folder to preview it</source>
        <translation>Legen Sie hier einen Ordner für die Vorschau ab</translation>
    </message>
</context>
<context>
    <name>DuplicatesModel</name>
    <message numerus="yes">
        <source>%1 identical copies · %2</source>
        <translation>
            <numerusform>%1 gleiche Kopie · %2</numerusform>
            <numerusform>%1 gleiche Kopien · %2</numerusform>
        </translation>
    </message>
    <message>
        <source>frees %1</source>
        <translation>macht %1 frei</translation>
    </message>
    <message>
        <source>kept</source>
        <translation>bleibt</translation>
    </message>
    <message>
        <source>extra</source>
        <translation>überzählig</translation>
    </message>
    <message>
        <source>This copy is kept.</source>
        <translation>Diese Kopie bleibt.</translation>
    </message>
    <message>
        <source>Extra: goes to the Trash when you say so.</source>
        <translation>Überzählig: kommt in den Papierkorb, wenn Sie es sagen.</translation>
    </message>
    <message>
        <source>Keep this copy instead</source>
        <translation>Stattdessen diese Kopie behalten</translation>
    </message>
    <message>
        <source>Reveal in Finder</source>
        <translation>Im Dateimanager zeigen</translation>
    </message>
</context>
<context>
    <name>DuplicatesNotices</name>
    <message>
        <source>Files that could not be read</source>
        <translation>Dateien, die nicht lesbar waren</translation>
    </message>
    <message>
        <source>Show Files</source>
        <translation>Dateien zeigen</translation>
    </message>
    <message>
        <source>Hide Files</source>
        <translation>Ausblenden</translation>
    </message>
    <message numerus="yes">
        <source>%1 files could not be read and were left out.</source>
        <translation>
            <numerusform>%1 Datei war nicht lesbar und wurde ausgelassen.</numerusform>
            <numerusform>%1 Dateien waren nicht lesbar und wurden ausgelassen.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>DuplicatesView</name>
    <message numerus="yes">
        <source>%1 extras</source>
        <translation>
            <numerusform>%1 überzählige Kopie</numerusform>
            <numerusform>%1 überzählige Kopien</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of them not shown</source>
        <translation>
            <numerusform>davon %1 nicht zu sehen</numerusform>
            <numerusform>davon %1 nicht zu sehen</numerusform>
        </translation>
    </message>
    <message>
        <source>Duplicates</source>
        <translation>Duplikate</translation>
    </message>
    <message>
        <source>Auto-pick the copy to keep</source>
        <translation>Was bleibt, automatisch wählen</translation>
    </message>
    <message>
        <source>Find exact duplicates</source>
        <translation>Exakte Duplikate finden</translation>
    </message>
    <message>
        <source>Scans the files from your current preview and groups byte-for-byte identical copies.</source>
        <translation>Durchsucht die Dateien der aktuellen Vorschau und fasst Kopien zusammen, die Byte für Byte gleich sind.</translation>
    </message>
    <message>
        <source>Find Duplicates</source>
        <translation>Duplikate suchen</translation>
    </message>
    <message>
        <source>Choose Folder…</source>
        <translation>Ordner wählen…</translation>
    </message>
    <message>
        <source>Hashing files to find exact duplicates…</source>
        <translation>Exakte Duplikate werden gesucht…</translation>
    </message>
    <message>
        <source>No exact duplicates</source>
        <translation>Keine exakten Duplikate</translation>
    </message>
    <message>
        <source>Every file in this folder is unique by content.</source>
        <translation>Jede Datei dieses Ordners hat einen anderen Inhalt.</translation>
    </message>
    <message>
        <source>Search Again</source>
        <translation>Neu suchen</translation>
    </message>
    <message>
        <source>Search duplicates</source>
        <translation>Duplikate durchsuchen</translation>
    </message>
    <message>
        <source>Groups of identical copies</source>
        <translation>Gruppen gleicher Kopien</translation>
    </message>
    <message>
        <source>No duplicate matches the search.</source>
        <translation>Kein Duplikat passt zur Suche.</translation>
    </message>
    <message>
        <source>Move All Extras to Trash…</source>
        <translation>Alle überzähligen in den Papierkorb…</translation>
    </message>
    <message>
        <source>Click a file to keep it. Extras go to the Trash — you can put them back here or from the Finder.</source>
        <translation>Klicken Sie auf die Datei, die bleiben soll. Überzählige kommen in den Papierkorb – zurücklegen können Sie sie hier oder im Dateimanager.</translation>
    </message>
    <message>
        <source>Compares the files of the preview once more</source>
        <translation>Vergleicht die Dateien der Vorschau noch einmal</translation>
    </message>
    <message numerus="yes">
        <source>duplicate groups</source>
        <translation>
            <numerusform>Gruppe von Duplikaten</numerusform>
            <numerusform>Gruppen von Duplikaten</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>extras</source>
        <translation>
            <numerusform>überzählige Kopie</numerusform>
            <numerusform>überzählige Kopien</numerusform>
        </translation>
    </message>
    <message>
        <source>can be freed</source>
        <translation>lassen sich freimachen</translation>
    </message>
    <message numerus="yes">
        <source>files compared</source>
        <translation>
            <numerusform>Datei verglichen</numerusform>
            <numerusform>Dateien verglichen</numerusform>
        </translation>
    </message>
    <message>
        <source>· %1, each checked again first</source>
        <translation>· %1, jede wird vorher noch einmal geprüft</translation>
    </message>
    <message>
        <source>Checking each file again, then moving extras to the Trash…</source>
        <translation>Kopien werden geprüft und in den Papierkorb gelegt…</translation>
    </message>
    <message>
        <source>Oldest, newest, shortest or deepest path, for every group at once. You can still click any copy.</source>
        <translation>Älteste, neueste, kürzester oder tiefster Pfad, für alle Gruppen auf einmal. Einzelne Kopien können Sie weiter anklicken.</translation>
    </message>
    <message>
        <source>Moves every copy but the kept one of each group. You will be asked to confirm.</source>
        <translation>Legt von jeder Gruppe alle Kopien außer der einen, die bleibt, in den Papierkorb. Sie werden vorher gefragt.</translation>
    </message>
    <message>
        <source>Move duplicate extras to the Trash?</source>
        <translation>Überzählige Kopien in den Papierkorb legen?</translation>
    </message>
    <message>
        <source>The copy you chose to keep stays. Each extra is checked again first, and anything that changed is left alone. You can put files back from the Recovery Center or the Finder Trash.</source>
        <translation>Die Kopie, die bleiben soll, bleibt. Jede überzählige wird vorher noch einmal geprüft, und was sich geändert hat, bleibt liegen. Zurücklegen können Sie die Dateien über die Wiederherstellung oder im Papierkorb des Dateimanagers.</translation>
    </message>
    <message numerus="yes">
        <source>Move %1 Extras to Trash</source>
        <translation>
            <numerusform>%1 Kopie in den Papierkorb</numerusform>
            <numerusform>%1 Kopien in den Papierkorb</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Engine</name>
    <message>
        <source>Not a local file.</source>
        <translation>Keine Datei auf diesem Rechner.</translation>
    </message>
    <message>
        <source>Outside the folder you authorized.</source>
        <translation>Außerhalb des Ordners, den Sie freigegeben haben.</translation>
    </message>
    <message>
        <source>Would land outside the organized folder.</source>
        <translation>Käme außerhalb des Zielordners zu liegen.</translation>
    </message>
    <message>
        <source>Already in the right place.</source>
        <translation>Liegt schon am richtigen Ort.</translation>
    </message>
    <message>
        <source>This is the folder itself.</source>
        <translation>Das ist der Ordner selbst.</translation>
    </message>
    <message>
        <source>The chosen folder is too broad to organize safely.</source>
        <translation>Der gewählte Ordner ist zu umfassend, um darin sicher aufzuräumen.</translation>
    </message>
    <message>
        <source>Not a regular file.</source>
        <translation>Keine gewöhnliche Datei.</translation>
    </message>
    <message>
        <source>Could not evaluate this file.</source>
        <translation>Diese Datei ließ sich nicht beurteilen.</translation>
    </message>
    <message>
        <source>This folder could not be read; the files in it are left untouched.</source>
        <translation>Dieser Ordner war nicht lesbar; die Dateien darin bleiben unberührt.</translation>
    </message>
    <message>
        <source>This folder lies too deep to be looked into; the files in it are left untouched.</source>
        <translation>Dieser Ordner liegt zu tief, um hineinzusehen; die Dateien darin bleiben unberührt.</translation>
    </message>
    <message>
        <source>Your rule: .%1 → %2. Preview only.</source>
        <translation>Ihre Regel: .%1 → %2. Nur Vorschau.</translation>
    </message>
    <message>
        <source>Your rule: .%1 → %2</source>
        <translation>Ihre Regel: .%1 → %2</translation>
    </message>
    <message>
        <source>File type .%1 grouped as %2. Preview only.</source>
        <translation>Dateityp .%1, gehört zu %2. Nur Vorschau.</translation>
    </message>
    <message>
        <source>This looks like an unfinished download</source>
        <translation>Sieht nach einem unfertigen Download aus</translation>
    </message>
    <message>
        <source>This looks like an unfinished download; it is left out unless you tick it.</source>
        <translation>Das sieht nach einem unfertigen Download aus; die Datei bleibt liegen, solange Sie sie nicht auswählen.</translation>
    </message>
    <message>
        <source>Another file would be organized to the same location. Needs your decision; left untouched.</source>
        <translation>Eine andere Datei käme an denselben Ort. Das entscheiden Sie; bleibt unberührt.</translation>
    </message>
    <message>
        <source>A file already exists at the destination. Will not overwrite; left untouched.</source>
        <translation>Am Ziel gibt es schon eine Datei. Sie wird nicht überschrieben; bleibt unberührt.</translation>
    </message>
    <message>
        <source>We couldn&apos;t read that folder. Check permissions and try again.</source>
        <translation>Dieser Ordner war nicht lesbar. Prüfen Sie die Zugriffsrechte und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>Moved.</source>
        <translation>Verschoben.</translation>
    </message>
    <message>
        <source>Copied, verified and moved.</source>
        <translation>Kopiert, geprüft und verschoben.</translation>
    </message>
    <message>
        <source>Source changed since preview; left untouched.</source>
        <translation>Seit der Vorschau geändert; bleibt unberührt.</translation>
    </message>
    <message>
        <source>Path no longer within the authorized scope.</source>
        <translation>Der Pfad liegt nicht mehr im freigegebenen Bereich.</translation>
    </message>
    <message>
        <source>A parent folder is a symlink; skipped to stay in scope.</source>
        <translation>Ein übergeordneter Ordner ist ein symbolischer Link; übersprungen, um im freigegebenen Bereich zu bleiben.</translation>
    </message>
    <message>
        <source>A file already exists at the destination; left untouched.</source>
        <translation>Am Ziel gibt es schon eine Datei; bleibt unberührt.</translation>
    </message>
    <message>
        <source>The run was stopped before this file; left untouched.</source>
        <translation>Der Durchlauf wurde vor dieser Datei angehalten; bleibt unberührt.</translation>
    </message>
    <message>
        <source>Could not move this file; it was left in place.</source>
        <translation>Diese Datei ließ sich nicht verschieben; sie liegt, wo sie war.</translation>
    </message>
    <message>
        <source>Move did not land at the destination.</source>
        <translation>Die Datei kam nicht am Ziel an.</translation>
    </message>
    <message>
        <source>Copy verification failed; source kept, copy removed.</source>
        <translation>Die Kopie bestand die Prüfung nicht; das Original ist geblieben, die Kopie wurde entfernt.</translation>
    </message>
    <message>
        <source>Copied and verified, but the original could not be removed; copy discarded to avoid a duplicate.</source>
        <translation>Kopiert und geprüft, doch das Original ließ sich nicht entfernen; die Kopie wurde verworfen, um ein Duplikat zu vermeiden.</translation>
    </message>
    <message>
        <source>Restored.</source>
        <translation>Zurückgelegt.</translation>
    </message>
    <message>
        <source>Journal entry is outside the authorized scope; undo refused.</source>
        <translation>Der Eintrag im Protokoll liegt außerhalb des freigegebenen Bereichs; nicht rückgängig gemacht.</translation>
    </message>
    <message>
        <source>The organized file is missing or was changed since, so it was left as it is.</source>
        <translation>Die einsortierte Datei fehlt oder wurde seitdem geändert und bleibt deshalb, wie sie ist.</translation>
    </message>
    <message>
        <source>A parent folder is a symlink; undo skipped to stay in scope.</source>
        <translation>Ein übergeordneter Ordner ist ein symbolischer Link; nicht rückgängig gemacht, um im freigegebenen Bereich zu bleiben.</translation>
    </message>
    <message>
        <source>Original location is occupied; undo skipped.</source>
        <translation>Der ursprüngliche Ort ist belegt; nicht rückgängig gemacht.</translation>
    </message>
    <message>
        <source>File was modified after organizing; undo skipped to avoid data loss.</source>
        <translation>Die Datei wurde nach dem Einsortieren geändert; nicht rückgängig gemacht, damit nichts verloren geht.</translation>
    </message>
    <message>
        <source>A different file now occupies that location; undo skipped.</source>
        <translation>An diesem Ort liegt inzwischen eine andere Datei; nicht rückgängig gemacht.</translation>
    </message>
    <message>
        <source>Could not restore this file.</source>
        <translation>Diese Datei ließ sich nicht zurücklegen.</translation>
    </message>
    <message>
        <source>Restore verification failed; organized copy kept.</source>
        <translation>Die zurückgelegte Datei bestand die Prüfung nicht; die einsortierte ist geblieben.</translation>
    </message>
    <message>
        <source>Could not finish restoring; organized copy kept.</source>
        <translation>Das Zurücklegen kam nicht zu Ende; die einsortierte Datei ist geblieben.</translation>
    </message>
    <message>
        <source>Moved to the Trash.</source>
        <translation>In den Papierkorb gelegt.</translation>
    </message>
    <message>
        <source>Outside the folder you chose; left untouched.</source>
        <translation>Außerhalb des gewählten Ordners; bleibt unberührt.</translation>
    </message>
    <message>
        <source>Missing or no longer a regular file; left untouched.</source>
        <translation>Fehlt oder ist keine gewöhnliche Datei mehr; bleibt unberührt.</translation>
    </message>
    <message>
        <source>Couldn&apos;t read the file to record it for Put Back; left untouched.</source>
        <translation>Die Datei war nicht lesbar und ließ sich nicht fürs Zurücklegen vermerken; bleibt unberührt.</translation>
    </message>
    <message>
        <source>The file changed since you looked at it; left untouched.</source>
        <translation>Die Datei hat sich geändert, seit Sie sie angesehen haben; bleibt unberührt.</translation>
    </message>
    <message>
        <source>The copy you chose to keep changed or is missing; nothing was moved.</source>
        <translation>Die Kopie, die bleiben soll, hat sich geändert oder fehlt; nichts wurde verschoben.</translation>
    </message>
    <message>
        <source>This is the same file as the one you&apos;re keeping; left untouched.</source>
        <translation>Das ist dieselbe Datei wie die, die bleiben soll; bleibt unberührt.</translation>
    </message>
    <message>
        <source>No longer identical to the copy you&apos;re keeping; left untouched.</source>
        <translation>Nicht mehr gleich der Kopie, die bleiben soll; bleibt unberührt.</translation>
    </message>
    <message>
        <source>Couldn&apos;t move this file to the Trash; it was left in place.</source>
        <translation>Diese Datei ließ sich nicht in den Papierkorb legen; sie liegt, wo sie war.</translation>
    </message>
    <message>
        <source>Put back.</source>
        <translation>Zurückgelegt.</translation>
    </message>
    <message>
        <source>Couldn&apos;t put this file back; it is still in the Trash.</source>
        <translation>Diese Datei ließ sich nicht zurücklegen; sie ist noch im Papierkorb.</translation>
    </message>
    <message>
        <source>Not a Trash item for this folder; restore refused.</source>
        <translation>Kein Objekt im Papierkorb, das aus diesem Ordner stammt; nicht zurückgelegt.</translation>
    </message>
    <message>
        <source>No longer in the Trash (emptied or moved).</source>
        <translation>Nicht mehr im Papierkorb (geleert oder verschoben).</translation>
    </message>
    <message>
        <source>The trashed file changed; restore skipped.</source>
        <translation>Die Datei im Papierkorb hat sich geändert; nicht zurückgelegt.</translation>
    </message>
    <message>
        <source>Something now occupies the original location; restore skipped.</source>
        <translation>Der ursprüngliche Ort ist inzwischen belegt; nicht zurückgelegt.</translation>
    </message>
    <message>
        <source>Restore verification failed; the file is still in the Trash.</source>
        <translation>Die zurückgelegte Datei bestand die Prüfung nicht; sie ist noch im Papierkorb.</translation>
    </message>
    <message>
        <source>Couldn&apos;t finish restoring; the file is still in the Trash.</source>
        <translation>Das Zurücklegen kam nicht zu Ende; die Datei ist noch im Papierkorb.</translation>
    </message>
    <message>
        <source>ordovan+ doesn&apos;t have permission to change this folder. Choose the folder again with Choose Folder…, or check its permissions in Finder.</source>
        <translation>ordovan+ darf in diesem Ordner nichts ändern. Wählen Sie ihn mit „Ordner wählen…“ noch einmal oder prüfen Sie seine Zugriffsrechte im Dateimanager.</translation>
    </message>
    <message>
        <source>The disk is full. Free up some space and try again.</source>
        <translation>Der Datenträger ist voll. Schaffen Sie etwas Platz und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>This disk is read-only.</source>
        <translation>Dieser Datenträger ist schreibgeschützt.</translation>
    </message>
    <message>
        <source>The file was moved or deleted while organizing.</source>
        <translation>Die Datei wurde währenddessen verschoben oder gelöscht.</translation>
    </message>
    <message>
        <source>The file is in use by another app.</source>
        <translation>Die Datei wird gerade von einem anderen Programm benutzt.</translation>
    </message>
    <message>
        <source>The system reported an error (code %1).</source>
        <translation>Das System meldet einen Fehler (Code %1).</translation>
    </message>
    <message>
        <source>The file was moved or deleted while organizing, and another is at its destination.</source>
        <translation>Die Datei wurde währenddessen verschoben oder gelöscht, und an ihrem Ziel liegt eine andere.</translation>
    </message>
    <message>
        <source>The file could not be looked at after the interruption; left as it is.</source>
        <translation>Die Datei ließ sich nach der Unterbrechung nicht ansehen; sie bleibt, wie sie ist.</translation>
    </message>
    <message>
        <source>What the interrupted run left of this file could not be removed; the file is whole.</source>
        <translation>Was der unterbrochene Durchlauf von dieser Datei zurückließ, ließ sich nicht entfernen; die Datei selbst ist vollständig.</translation>
    </message>
    <message>
        <source>Its second name was taken away again; the file is where it was.</source>
        <translation>Ihr zweiter Name wurde wieder entfernt; die Datei liegt, wo sie war.</translation>
    </message>
    <message>
        <source>The file has another name at the destination; left untouched.</source>
        <translation>Die Datei hat am Ziel noch einen Namen; bleibt unberührt.</translation>
    </message>
    <message>
        <source>The file has another name in the Trash; left untouched.</source>
        <translation>Die Datei hat im Papierkorb noch einen Namen; bleibt unberührt.</translation>
    </message>
    <message>
        <source>Its verified copy was taken away again; the file is where it was.</source>
        <translation>Ihre geprüfte Kopie wurde wieder entfernt; die Datei liegt, wo sie war.</translation>
    </message>
    <message>
        <source>An unfinished copy of it was removed; the file is where it was.</source>
        <translation>Eine unfertige Kopie davon wurde entfernt; die Datei liegt, wo sie war.</translation>
    </message>
    <message>
        <source>It had not reached the Trash; the file is where it was.</source>
        <translation>Sie war noch nicht im Papierkorb; die Datei liegt, wo sie war.</translation>
    </message>
    <message>
        <source>Its verified copy was put in place.</source>
        <translation>Ihre geprüfte Kopie wurde an ihren Platz gelegt.</translation>
    </message>
    <message>
        <source>A verified copy of it lies at %1.</source>
        <translation>Eine geprüfte Kopie davon liegt unter %1.</translation>
    </message>
    <message>
        <source>An unfinished copy of it lies at %1.</source>
        <translation>Eine unfertige Kopie davon liegt unter %1.</translation>
    </message>
    <message>
        <source>The file that was in its place lies at %1.</source>
        <translation>Die Datei, die an ihrer Stelle war, liegt unter %1.</translation>
    </message>
    <message>
        <source>&quot;%1&quot; isn&apos;t a valid extension. Use letters and numbers only, like dmg.</source>
        <translation>„%1“ ist keine gültige Endung. Verwenden Sie nur Buchstaben und Ziffern, etwa dmg.</translation>
    </message>
    <message>
        <source>Give the folder a name.</source>
        <translation>Geben Sie dem Ordner einen Namen.</translation>
    </message>
    <message>
        <source>Folder names can&apos;t contain / or :, start with a dot, or be longer than 64 characters.</source>
        <translation>Ordnernamen: weder / noch :, kein Punkt am Anfang, höchstens 64 Zeichen.</translation>
    </message>
    <message>
        <source>Add at least one file extension, like dmg or pkg.</source>
        <translation>Geben Sie mindestens eine Dateiendung an, etwa dmg oder pkg.</translation>
    </message>
    <message>
        <source>That rule couldn&apos;t be added.</source>
        <translation>Diese Regel ließ sich nicht hinzufügen.</translation>
    </message>
    <message>
        <source>You can have up to %1 rules.</source>
        <translation>Es sind höchstens %1 Regeln möglich.</translation>
    </message>
    <message>
        <source>Another ordovan+ run is working in this folder. Try again when it has finished.</source>
        <translation>In diesem Ordner arbeitet gerade ein anderer Durchlauf von ordovan+. Versuchen Sie es danach noch einmal.</translation>
    </message>
    <message>
        <source>Another ordovan+ is saving its records. Try again in a moment.</source>
        <translation>Ein anderes ordovan+ speichert gerade seine Aufzeichnungen. Versuchen Sie es gleich noch einmal.</translation>
    </message>
    <message>
        <source>The plan couldn&apos;t be saved there. Try another folder.</source>
        <translation>Der Plan ließ sich dort nicht speichern. Versuchen Sie es in einem anderen Ordner.</translation>
    </message>
    <message>
        <source>This run couldn&apos;t be added to the history on disk. It is listed until you quit.</source>
        <translation>Dieser Durchlauf ließ sich nicht in den gespeicherten Verlauf aufnehmen. Er steht hier, bis Sie das Programm beenden.</translation>
    </message>
    <message>
        <source>The history couldn&apos;t be cleared.</source>
        <translation>Der Verlauf ließ sich nicht löschen.</translation>
    </message>
    <message>
        <source>Files were organized, but the undo record could not be saved to disk. Undo is available until you quit.</source>
        <translation>Die Dateien sind einsortiert, doch das Protokoll zum Rückgängigmachen ließ sich nicht speichern. Rückgängig machen können Sie es, bis Sie das Programm beenden.</translation>
    </message>
    <message>
        <source>Files were organized, but the existing undo record could not be read or set aside, so this run&apos;s undo record was not saved. Undo is available until you quit.</source>
        <translation>Die Dateien sind einsortiert, doch das vorhandene Protokoll zum Rückgängigmachen ließ sich weder lesen noch beiseitelegen; das dieses Durchlaufs wurde deshalb nicht gespeichert. Rückgängig machen können Sie ihn, bis Sie das Programm beenden.</translation>
    </message>
    <message>
        <source>The undo record could not be updated. Files that were restored may be listed again; restoring them again is refused safely.</source>
        <translation>Das Protokoll zum Rückgängigmachen ließ sich nicht erneuern. Zurückgelegte Dateien stehen vielleicht noch einmal in der Liste; ein zweites Zurücklegen wird sicher abgelehnt.</translation>
    </message>
    <message>
        <source>Files were moved to the Trash, but the restore record couldn&apos;t be saved. Restore works until you quit; after that, use Put Back in the Finder Trash.</source>
        <translation>Die Dateien sind im Papierkorb, doch das Protokoll zum Zurücklegen ließ sich nicht speichern. Zurücklegen können Sie sie hier, bis Sie das Programm beenden; danach im Papierkorb des Dateimanagers.</translation>
    </message>
    <message>
        <source>The restore record couldn&apos;t be updated on disk. Files already put back may be listed again; putting them back again is refused safely.</source>
        <translation>Das Protokoll zum Zurücklegen ließ sich nicht erneuern. Zurückgelegte Dateien stehen vielleicht noch einmal in der Liste; ein zweites Zurücklegen wird sicher abgelehnt.</translation>
    </message>
    <message>
        <source>The empty file that kept its place was removed; the file is where it was.</source>
        <translation>Die leere Datei, die ihren Platz freihielt, wurde entfernt; die Datei liegt, wo sie war.</translation>
    </message>
</context>
<context>
    <name>EngineTexts</name>
    <message numerus="yes">
        <source>Organized %1 files in %2</source>
        <translation>
            <numerusform>%1 Datei in „%2“ einsortiert</numerusform>
            <numerusform>%1 Dateien in „%2“ einsortiert</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Restored %1 files in %2</source>
        <translation>
            <numerusform>%1 Datei in „%2“ zurückgelegt</numerusform>
            <numerusform>%1 Dateien in „%2“ zurückgelegt</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Moved %1 duplicate files to the Trash in %2</source>
        <translation>
            <numerusform>%1 doppelte Datei aus „%2“ in den Papierkorb</numerusform>
            <numerusform>%1 doppelte Dateien aus „%2“ in den Papierkorb</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Put back %1 files from the Trash in %2</source>
        <translation>
            <numerusform>%1 Datei aus dem Papierkorb zurück nach „%2“</numerusform>
            <numerusform>%1 Dateien aus dem Papierkorb zurück nach „%2“</numerusform>
        </translation>
    </message>
    <message>
        <source>An earlier run was interrupted, and its record could not be read. It was set aside.</source>
        <translation>Ein früherer Durchlauf wurde unterbrochen, und seine Aufzeichnung war nicht lesbar. Sie wurde beiseitegelegt.</translation>
    </message>
    <message>
        <source>An earlier run was interrupted.</source>
        <translation>Ein früherer Durchlauf wurde unterbrochen.</translation>
    </message>
    <message numerus="yes">
        <source>%1 files were finished</source>
        <translation>
            <numerusform>%1 Datei wurde fertig</numerusform>
            <numerusform>%1 Dateien wurden fertig</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 were finished</source>
        <translation>
            <numerusform>%1 wurde fertig</numerusform>
            <numerusform>%1 wurden fertig</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 files were left untouched</source>
        <translation>
            <numerusform>%1 Datei blieb unberührt</numerusform>
            <numerusform>%1 Dateien blieben unberührt</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 were left untouched</source>
        <translation>
            <numerusform>%1 blieb unberührt</numerusform>
            <numerusform>%1 blieben unberührt</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 files were put right</source>
        <translation>
            <numerusform>%1 Datei wurde in Ordnung gebracht</numerusform>
            <numerusform>%1 Dateien wurden in Ordnung gebracht</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 were put right</source>
        <translation>
            <numerusform>%1 wurde in Ordnung gebracht</numerusform>
            <numerusform>%1 wurden in Ordnung gebracht</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 files need a look</source>
        <translation>
            <numerusform>%1 Datei sollten Sie ansehen</numerusform>
            <numerusform>%1 Dateien sollten Sie ansehen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 need a look</source>
        <translation>
            <numerusform>%1 sollten Sie ansehen</numerusform>
            <numerusform>%1 sollten Sie ansehen</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 and %2</source>
        <extracomment>The end of a list: what comes before, and the last part</extracomment>
        <translation>%1 und %2</translation>
    </message>
    <message>
        <source>%1 proposed · %2 need review</source>
        <translation>%1 vorgeschlagen · %2&#xa0;zu&#xa0;prüfen</translation>
    </message>
    <message>
        <source>No folder selected</source>
        <translation>Kein Ordner gewählt</translation>
    </message>
    <message>
        <source>Previewing…</source>
        <translation>Vorschau entsteht…</translation>
    </message>
    <message>
        <source>Preview unavailable</source>
        <translation>Keine Vorschau</translation>
    </message>
    <message>
        <source>Preview ready. %1 proposed.</source>
        <translation>Vorschau fertig. %1 vorgeschlagen.</translation>
    </message>
    <message>
        <source>Preview ready. %1 proposed, %2 need review.</source>
        <translation>Vorschau fertig. %1 vorgeschlagen, %2 zu prüfen.</translation>
    </message>
    <message>
        <source>Preview unavailable. Check folder permissions and try again.</source>
        <translation>Keine Vorschau möglich. Prüfen Sie die Zugriffsrechte des Ordners und versuchen Sie es noch einmal.</translation>
    </message>
    <message>
        <source>It could not be recorded yet and will be looked at again.</source>
        <translation>Er konnte noch nicht aufgezeichnet werden und wird erneut angesehen.</translation>
    </message>
</context>
<context>
    <name>FilterField</name>
    <message>
        <source>Clear</source>
        <translation>Leeren</translation>
    </message>
</context>
<context>
    <name>Formats</name>
    <message numerus="yes">
        <source>%1 bytes</source>
        <translation>
            <numerusform>%1 Byte</numerusform>
            <numerusform>%1 Byte</numerusform>
        </translation>
    </message>
    <message>
        <source>%1 KB</source>
        <translation>%1 kB</translation>
    </message>
    <message>
        <source>%1 MB</source>
        <translation>%1 MB</translation>
    </message>
    <message>
        <source>%1 GB</source>
        <translation>%1 GB</translation>
    </message>
    <message>
        <source>%1 TB</source>
        <translation>%1 TB</translation>
    </message>
    <message>
        <source>%1 PB</source>
        <translation>%1 PB</translation>
    </message>
    <message>
        <source>%1 EB</source>
        <translation>%1 EB</translation>
    </message>
    <message numerus="yes">
        <source>%1 files</source>
        <translation>
            <numerusform>%1 Datei</numerusform>
            <numerusform>%1 Dateien</numerusform>
        </translation>
    </message>
    <message>
        <source>%1, %2</source>
        <extracomment>A day and a time of day</extracomment>
        <translation>%1, %2</translation>
    </message>
</context>
<context>
    <name>HistoryModel</name>
    <message numerus="yes">
        <source>%1 skipped</source>
        <translation>
            <numerusform>%1 übersprungen</numerusform>
            <numerusform>%1 übersprungen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 failed</source>
        <translation>
            <numerusform>%1 fehlgeschlagen</numerusform>
            <numerusform>%1 fehlgeschlagen</numerusform>
        </translation>
    </message>
    <message>
        <source>Today</source>
        <translation>Heute</translation>
    </message>
</context>
<context>
    <name>HistoryView</name>
    <message>
        <source>All</source>
        <translation>Alle</translation>
    </message>
    <message>
        <source>Shows every run</source>
        <translation>Zeigt alle Durchläufe</translation>
    </message>
    <message>
        <source>Organize</source>
        <translation>Einsortieren</translation>
    </message>
    <message>
        <source>Shows only runs that organized files</source>
        <translation>Zeigt nur Durchläufe, in denen Dateien einsortiert wurden</translation>
    </message>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Shows only runs that undid organizing</source>
        <translation>Zeigt nur Durchläufe, in denen Einsortieren rückgängig gemacht wurde</translation>
    </message>
    <message>
        <source>Trash</source>
        <translation>Papierkorb</translation>
    </message>
    <message>
        <source>Shows only runs that moved files to the Trash</source>
        <translation>Zeigt nur Durchläufe, in denen Dateien in den Papierkorb kamen</translation>
    </message>
    <message>
        <source>Put Back</source>
        <translation>Zurücklegen</translation>
    </message>
    <message>
        <source>Shows only runs that put files back from the Trash</source>
        <translation>Zeigt nur Durchläufe, in denen Dateien aus dem Papierkorb zurückgelegt wurden</translation>
    </message>
    <message>
        <source>Past runs, newest first</source>
        <translation>Frühere Durchläufe, neueste zuerst</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Clear History…</source>
        <translation>Verlauf löschen…</translation>
    </message>
    <message>
        <source>Kept on this computer. Clearing it doesn&apos;t touch your files or the undo record.</source>
        <translation>Bleibt auf diesem Rechner. Ihn zu löschen, berührt weder Ihre Dateien noch das Protokoll zum Rückgängigmachen.</translation>
    </message>
    <message>
        <source>Each time you organize or undo, a summary appears here.</source>
        <translation>Jedes Mal, wenn Sie Dateien einsortieren oder das rückgängig machen, steht es danach hier.</translation>
    </message>
    <message>
        <source>Kind of run</source>
        <translation>Art des Durchlaufs</translation>
    </message>
    <message>
        <source>No runs of this kind</source>
        <translation>Keine Durchläufe dieser Art</translation>
    </message>
    <message>
        <source>Show All Runs</source>
        <translation>Alle Durchläufe zeigen</translation>
    </message>
    <message>
        <source>There is nothing to clear.</source>
        <translation>Es gibt nichts zu löschen.</translation>
    </message>
    <message>
        <source>Clears this log only</source>
        <translation>Löscht nur diesen Verlauf</translation>
    </message>
    <message>
        <source>None of the past runs is of the kind “%1”.</source>
        <translation>Keiner der früheren Durchläufe ist von der Art „%1“.</translation>
    </message>
    <message>
        <source>Clear the run history?</source>
        <translation>Den Verlauf der Durchläufe löschen?</translation>
    </message>
    <message>
        <source>Only this log is cleared. Organized files and Undo stay as they are.</source>
        <translation>Nur der Verlauf wird gelöscht. Einsortierte Dateien und das Rückgängigmachen bleiben, wie sie sind.</translation>
    </message>
    <message>
        <source>Clear History</source>
        <translation>Verlauf löschen</translation>
    </message>
</context>
<context>
    <name>KeepPolicy</name>
    <message>
        <source>Oldest</source>
        <translation>Älteste</translation>
    </message>
    <message>
        <source>Newest</source>
        <translation>Neueste</translation>
    </message>
    <message>
        <source>Shortest path</source>
        <translation>Kürzester Pfad</translation>
    </message>
    <message>
        <source>Deepest path</source>
        <translation>Tiefster Pfad</translation>
    </message>
</context>
<context>
    <name>OrdovanWindow</name>
    <message>
        <source>File</source>
        <translation>Datei</translation>
    </message>
    <message>
        <source>About ordovan+</source>
        <translation>Über ordovan+</translation>
    </message>
    <message>
        <source>Settings…</source>
        <translation>Einstellungen…</translation>
    </message>
    <message>
        <source>Close</source>
        <translation>Schließen</translation>
    </message>
    <message>
        <source>Quit</source>
        <translation>Beenden</translation>
    </message>
    <message>
        <source>Open ordovan+</source>
        <translation>ordovan+ öffnen</translation>
    </message>
    <message>
        <source>Help</source>
        <translation>Hilfe</translation>
    </message>
    <message>
        <source>ordovan+ Help</source>
        <translation>Hilfe zu ordovan+</translation>
    </message>
    <message>
        <source>No web browser could be opened</source>
        <translation>Es ließ sich kein Browser öffnen</translation>
    </message>
    <message>
        <source>The documentation is at %1</source>
        <translation>Die Dokumentation steht unter %1</translation>
    </message>
    <message>
        <source>OK</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>Stop moving files and quit?</source>
        <translation>Verschieben anhalten und beenden?</translation>
    </message>
    <message>
        <source>ordovan+ stops as soon as the file it is at is done. What has moved by then is recorded and can be put back later.</source>
        <translation>ordovan+ hält an, sobald die Datei fertig ist, an der es gerade arbeitet. Was bis dahin verschoben wurde, ist vermerkt und lässt sich später zurücklegen.</translation>
    </message>
    <message>
        <source>Stop and Quit</source>
        <translation>Anhalten und beenden</translation>
    </message>
    <message>
        <source>Keep Running</source>
        <translation>Weitermachen</translation>
    </message>
    <message>
        <source>Preview Again</source>
        <translation>Vorschau erneuern</translation>
    </message>
</context>
<context>
    <name>OrganizeMenu</name>
    <message>
        <source>Choose Folder…</source>
        <translation>Ordner wählen…</translation>
    </message>
    <message>
        <source>Preview Downloads</source>
        <translation>Vorschau von Downloads</translation>
    </message>
    <message>
        <source>Organize Selected Files…</source>
        <translation>Ausgewählte Dateien einsortieren…</translation>
    </message>
    <message>
        <source>Undo Organize</source>
        <translation>Einsortieren rückgängig machen</translation>
    </message>
    <message>
        <source>Find Duplicates</source>
        <translation>Duplikate suchen</translation>
    </message>
    <message>
        <source>Export Plan…</source>
        <translation>Plan exportieren…</translation>
    </message>
    <message>
        <source>Organize</source>
        <translation>Einsortieren</translation>
    </message>
</context>
<context>
    <name>PlanModel</name>
    <message>
        <source>Reveal in Finder</source>
        <translation>Im Dateimanager zeigen</translation>
    </message>
    <message>
        <source>Proposed — safe, no conflict</source>
        <translation>Vorgeschlagen – sicher, ohne Konflikt</translation>
    </message>
    <message>
        <source>Needs your review — left untouched</source>
        <translation>Von Ihnen zu prüfen – bleibt unberührt</translation>
    </message>
    <message>
        <source>Skipped — left untouched</source>
        <translation>Übersprungen – bleibt unberührt</translation>
    </message>
    <message>
        <source>Goes to %1</source>
        <translation>Kommt nach %1</translation>
    </message>
    <message>
        <source>Leave This File Out</source>
        <translation>Diese Datei auslassen</translation>
    </message>
    <message>
        <source>Include This File</source>
        <translation>Diese Datei einbeziehen</translation>
    </message>
    <message>
        <source>Would go to %1</source>
        <translation>Käme nach %1</translation>
    </message>
</context>
<context>
    <name>ProgressStrip</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>QuickLook</name>
    <message>
        <source>The beginning of the file</source>
        <translation>Der Anfang der Datei</translation>
    </message>
    <message>
        <source>Only the beginning of this file is shown.</source>
        <translation>Zu sehen ist nur der Anfang dieser Datei.</translation>
    </message>
    <message>
        <source>Kind</source>
        <translation>Art</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Last changed</source>
        <translation>Zuletzt geändert</translation>
    </message>
    <message>
        <source>Where</source>
        <translation>Ort</translation>
    </message>
    <message>
        <source>Not known</source>
        <translation>Nicht bekannt</translation>
    </message>
    <message>
        <source>Picture: %1</source>
        <translation>Bild: %1</translation>
    </message>
    <message>
        <source>This file is empty.</source>
        <translation>Diese Datei ist leer.</translation>
    </message>
    <message>
        <source>There is no preview for this kind of file.</source>
        <translation>Von Dateien dieser Art gibt es keine Vorschau.</translation>
    </message>
    <message>
        <source>This file can&apos;t be read right now.</source>
        <translation>Diese Datei lässt sich gerade nicht lesen.</translation>
    </message>
</context>
<context>
    <name>RecentFoldersMenu</name>
    <message>
        <source>Recent Folders</source>
        <translation>Zuletzt benutzte Ordner</translation>
    </message>
    <message>
        <source>No folder was previewed yet.</source>
        <translation>Es gab noch keine Vorschau eines Ordners.</translation>
    </message>
</context>
<context>
    <name>RecoveryModel</name>
    <message numerus="yes">
        <source>%1 organized files can go back to where they came from.</source>
        <translation>
            <numerusform>%1 einsortierte Datei kann dorthin zurück, woher sie kam.</numerusform>
            <numerusform>%1 einsortierte Dateien können dorthin zurück, woher sie kamen.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 files in the Trash can be put back (from Duplicates or Big Files).</source>
        <translation>
            <numerusform>%1 Datei im Papierkorb kann zurück (aus Duplikate oder Große Dateien).</numerusform>
            <numerusform>%1 Dateien im Papierkorb können zurück (aus Duplikate oder Große Dateien).</numerusform>
        </translation>
    </message>
    <message>
        <source>Looking whether it is still there…</source>
        <translation>Es wird nachgesehen, ob sie noch da ist…</translation>
    </message>
    <message>
        <source>Choose the folder that it came from first.</source>
        <translation>Wählen Sie zuerst den Ordner, aus dem sie stammt.</translation>
    </message>
    <message>
        <source>Put just this file back</source>
        <translation>Nur diese Datei zurücklegen</translation>
    </message>
    <message>
        <source>This file is no longer there. Missing: deleted or moved since organizing. Undo will skip it.</source>
        <translation>Nicht mehr da: seit dem Einsortieren gelöscht oder verschoben. Rückgängigmachen überspringt sie.</translation>
    </message>
    <message>
        <source>The record names a place outside this folder or behind a link. Undo will refuse it.</source>
        <translation>Das Protokoll nennt einen Ort außerhalb dieses Ordners oder hinter einem Link. Das Rückgängigmachen wird abgelehnt.</translation>
    </message>
    <message>
        <source>%1 · Undo returns it to %2</source>
        <extracomment>Where an organized file lies, and the folder that it came from</extracomment>
        <translation>%1 · kommt zurück nach %2</translation>
    </message>
    <message>
        <source>Put Just This File Back</source>
        <translation>Nur diese zurücklegen</translation>
    </message>
    <message>
        <source>Reveal in Finder</source>
        <translation>Im Dateimanager zeigen</translation>
    </message>
    <message>
        <source>No longer in the Trash (emptied or moved), so it can&apos;t be put back from here.</source>
        <translation>Nicht mehr im Papierkorb (geleert oder verschoben), also von hier nicht zurückzulegen.</translation>
    </message>
    <message>
        <source>The record names a place that is in no Trash or behind a link. Restore will refuse it.</source>
        <translation>Das Protokoll nennt einen Ort in keinem Papierkorb oder hinter einem Link. Das Zurücklegen wird abgelehnt.</translation>
    </message>
    <message>
        <source>In the Trash · %1 · Put Back returns it to %2</source>
        <extracomment>The size of a file, and the folder that it came from</extracomment>
        <translation>Im Papierkorb · %1 · kommt zurück nach %2</translation>
    </message>
    <message>
        <source>Put Back from Trash</source>
        <translation>Zurücklegen</translation>
    </message>
    <message>
        <source>Show in the Trash</source>
        <translation>Im Papierkorb zeigen</translation>
    </message>
</context>
<context>
    <name>RecoveryView</name>
    <message>
        <source>Undo is fail-closed: a file changed since organizing, or whose original slot is now occupied, is left where it is.</source>
        <translation>Im Zweifel bleibt alles, wie es ist: Eine Datei, die seit dem Einsortieren geändert wurde oder deren alter Platz belegt ist, wird nicht angerührt.</translation>
    </message>
    <message>
        <source>Recovery Center</source>
        <translation>Wiederherstellung</translation>
    </message>
    <message>
        <source>Undo Organize…</source>
        <translation>Rückgängig…</translation>
    </message>
    <message>
        <source>Put All Back…</source>
        <translation>Alle zurücklegen…</translation>
    </message>
    <message>
        <source>Nothing to recover</source>
        <translation>Nichts wiederherzustellen</translation>
    </message>
    <message>
        <source>After you organize files or move duplicates to the Trash, this is where you can undo it.</source>
        <translation>Wenn Sie Dateien einsortieren oder Duplikate in den Papierkorb legen, können Sie es hier rückgängig machen.</translation>
    </message>
    <message>
        <source>Search organized and trashed files</source>
        <translation>Dateien durchsuchen</translation>
    </message>
    <message>
        <source>Organized and trashed files</source>
        <translation>Einsortierte und weggelegte Dateien</translation>
    </message>
    <message>
        <source>No organized or trashed file matches the search.</source>
        <translation>Keine einsortierte oder weggelegte Datei passt zur Suche.</translation>
    </message>
    <message numerus="yes">
        <source>%1 files came from other folders. Choose their folder to put them back.</source>
        <translation>
            <numerusform>%1 Datei stammt aus einem anderen Ordner. Wählen Sie ihn, um sie zurückzulegen.</numerusform>
            <numerusform>%1 Dateien stammen aus anderen Ordnern. Wählen Sie deren Ordner, um sie zurückzulegen.</numerusform>
        </translation>
    </message>
    <message>
        <source>None of the organized files is there any more.</source>
        <translation>Keine der einsortierten Dateien ist noch da.</translation>
    </message>
    <message>
        <source>Puts every organized file of this folder back where it came from</source>
        <translation>Legt jede einsortierte Datei dieses Ordners dorthin zurück, woher sie kam</translation>
    </message>
    <message>
        <source>Looking whether the files are still there…</source>
        <translation>Es wird nachgesehen, ob die Dateien noch da sind…</translation>
    </message>
    <message>
        <source>No file in the Trash can go back to this folder.</source>
        <translation>Keine Datei im Papierkorb kann in diesen Ordner zurück.</translation>
    </message>
    <message>
        <source>Puts every file of this folder that is in the Trash back where it came from</source>
        <translation>Legt jede Datei dieses Ordners, die im Papierkorb ist, dorthin zurück, woher sie kam</translation>
    </message>
    <message>
        <source>Putting files back…</source>
        <translation>Dateien werden zurückgelegt…</translation>
    </message>
    <message>
        <source>Undo everything organized in this folder?</source>
        <translation>Alles Einsortieren in diesem Ordner rückgängig machen?</translation>
    </message>
    <message numerus="yes">
        <source>%1 organized files can go back to where they came from.</source>
        <translation>
            <numerusform>%1 einsortierte Datei kann dorthin zurück, woher sie kam.</numerusform>
            <numerusform>%1 einsortierte Dateien können dorthin zurück, woher sie kamen.</numerusform>
        </translation>
    </message>
    <message>
        <source>Undo Organize</source>
        <translation>Einsortieren rückgängig machen</translation>
    </message>
    <message>
        <source>Put all trashed files of this folder back?</source>
        <translation>Alle Dateien dieses Ordners aus dem Papierkorb zurücklegen?</translation>
    </message>
    <message numerus="yes">
        <source>%1 files can go back from the Trash. A file whose original place is now occupied stays in the Trash.</source>
        <translation>
            <numerusform>%1 Datei kann aus dem Papierkorb zurück. Ist ihr alter Platz inzwischen belegt, bleibt sie im Papierkorb.</numerusform>
            <numerusform>%1 Dateien können aus dem Papierkorb zurück. Eine Datei, deren alter Platz inzwischen belegt ist, bleibt im Papierkorb.</numerusform>
        </translation>
    </message>
    <message>
        <source>Put All Back</source>
        <translation>Alle zurücklegen</translation>
    </message>
</context>
<context>
    <name>RuleForm</name>
    <message>
        <source>Extensions, e.g. dmg, pkg</source>
        <translation>Endungen, z. B. dmg, pkg</translation>
    </message>
    <message>
        <source>Folder name, e.g. Installers</source>
        <translation>Ordner, z. B. Installer</translation>
    </message>
    <message>
        <source>Add Rule</source>
        <translation>Hinzufügen</translation>
    </message>
    <message>
        <source>Try: dmg, pkg → Installers</source>
        <translation>Zum Beispiel: dmg, pkg → Installer</translation>
    </message>
    <message>
        <source>Pick a folder name</source>
        <translation>Ordnernamen aussuchen</translation>
    </message>
    <message>
        <source>Built-in folders</source>
        <translation>Eingebaute Ordner</translation>
    </message>
    <message>
        <source>Rule added: files of the type %1 go to %2.</source>
        <translation>Regel hinzugefügt: Dateien vom Typ %1 kommen nach %2.</translation>
    </message>
    <message>
        <source>%1: not a built-in type</source>
        <translation>%1: kein eingebauter Typ</translation>
    </message>
</context>
<context>
    <name>RulesModel</name>
    <message>
        <source>Your rules, in order</source>
        <translation>Ihre Regeln, der Reihe nach</translation>
    </message>
    <message>
        <source>Files in the folder you&apos;re previewing that this rule would send to %1: %2</source>
        <translation>Dateien der Vorschau, die nach %1 kämen: %2</translation>
    </message>
    <message>
        <source>Files in the folder you&apos;re previewing that this rule would send to %1</source>
        <translation>Dateien der Vorschau, die nach %1 kämen</translation>
    </message>
    <message>
        <source>not a built-in type</source>
        <translation>kein eingebauter Typ</translation>
    </message>
    <message>
        <source>%1: not a built-in type</source>
        <translation>%1: kein eingebauter Typ</translation>
    </message>
    <message>
        <source>Delete rule for %1</source>
        <translation>Regel für %1 löschen</translation>
    </message>
    <message>
        <source>Delete this rule (your files are not affected)</source>
        <translation>Diese Regel löschen (Ihre Dateien bleiben unberührt)</translation>
    </message>
</context>
<context>
    <name>RulesView</name>
    <message>
        <source>Rules</source>
        <translation>Regeln</translation>
    </message>
    <message>
        <source>Send file types to folders you name, like .dmg and .pkg to Installers. Rules change the preview only; nothing moves until you apply.</source>
        <translation>Schicken Sie Dateitypen in Ordner, die Sie benennen, etwa .dmg und .pkg nach Installer. Regeln ändern nur die Vorschau; nichts wird verschoben, bevor Sie es sagen.</translation>
    </message>
    <message>
        <source>Your rules, in order</source>
        <translation>Ihre Regeln, der Reihe nach</translation>
    </message>
    <message>
        <source>No rules yet. Type extensions and a folder name above to add one.</source>
        <translation>Noch keine Regeln. Geben Sie oben Endungen und einen Ordnernamen ein, um eine hinzuzufügen.</translation>
    </message>
    <message>
        <source>The first matching rule wins. Files without a rule use the built-in folders (Documents, Images…).</source>
        <translation>Die erste passende Regel gilt. Dateien ohne Regel kommen in die eingebauten Ordner (Documents, Images…).</translation>
    </message>
    <message>
        <source>Search types, e.g. pdf</source>
        <translation>Typen suchen, z. B. pdf</translation>
    </message>
    <message>
        <source>Built-in types</source>
        <translation>Eingebaute Typen</translation>
    </message>
    <message>
        <source>not a built-in type</source>
        <translation>kein eingebauter Typ</translation>
    </message>
    <message>
        <source>Files of this type go to Other, unless a rule of yours sends them elsewhere.</source>
        <translation>Dateien dieses Typs kommen nach Other, wenn keine Ihrer Regeln passt.</translation>
    </message>
    <message>
        <source>Hide Built-in Types</source>
        <translation>Eingebaute Typen ausblenden</translation>
    </message>
    <message>
        <source>Show Built-in Types</source>
        <translation>Eingebaute Typen zeigen</translation>
    </message>
    <message>
        <source>The rules couldn&apos;t be put in another order.</source>
        <translation>Die Reihenfolge der Regeln ließ sich nicht ändern.</translation>
    </message>
    <message>
        <source>%1 is now rule %2 of %3.</source>
        <translation>%1 ist jetzt Regel %2 von %3.</translation>
    </message>
    <message>
        <source>The rule couldn&apos;t be deleted.</source>
        <translation>Die Regel ließ sich nicht löschen.</translation>
    </message>
    <message>
        <source>The rule %1 was deleted.</source>
        <translation>Die Regel %1 wurde gelöscht.</translation>
    </message>
</context>
<context>
    <name>RunTexts</name>
    <message numerus="yes">
        <source>Put back %1 files from the Trash.</source>
        <translation>
            <numerusform>%1 Datei aus dem Papierkorb zurückgelegt.</numerusform>
            <numerusform>%1 Dateien aus dem Papierkorb zurückgelegt.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Put back %1 files from the Trash; %2.</source>
        <translation>
            <numerusform>%1 Datei aus dem Papierkorb zurückgelegt; %2.</numerusform>
            <numerusform>%1 Dateien aus dem Papierkorb zurückgelegt; %2.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of %2 files</source>
        <translation>
            <numerusform>%1 von %2 Datei</numerusform>
            <numerusform>%1 von %2 Dateien</numerusform>
        </translation>
    </message>
    <message>
        <source>Putting an interrupted run in order…</source>
        <translation>Ein unterbrochener Durchlauf wird in Ordnung gebracht…</translation>
    </message>
    <message numerus="yes">
        <source>%1 skipped</source>
        <translation>
            <numerusform>%1 übersprungen</numerusform>
            <numerusform>%1 übersprungen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 failed</source>
        <translation>
            <numerusform>%1 fehlgeschlagen</numerusform>
            <numerusform>%1 fehlgeschlagen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Last organize run moved %1 files.</source>
        <translation>
            <numerusform>Zuletzt %1 Datei einsortiert.</numerusform>
            <numerusform>Zuletzt %1 Dateien einsortiert.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Last organize run moved %1 files; %2.</source>
        <translation>
            <numerusform>Zuletzt %1 Datei einsortiert; %2.</numerusform>
            <numerusform>Zuletzt %1 Dateien einsortiert; %2.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Last undo run put back %1 files.</source>
        <translation>
            <numerusform>Zuletzt %1 Datei zurückgelegt.</numerusform>
            <numerusform>Zuletzt %1 Dateien zurückgelegt.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Last undo run put back %1 files; %2.</source>
        <translation>
            <numerusform>Zuletzt %1 Datei zurückgelegt; %2.</numerusform>
            <numerusform>Zuletzt %1 Dateien zurückgelegt; %2.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>SectionView</name>
    <message>
        <source>No matching files</source>
        <translation>Keine passenden Dateien</translation>
    </message>
    <message>
        <source>Show All Files</source>
        <translation>Alle Dateien zeigen</translation>
    </message>
</context>
<context>
    <name>Sections</name>
    <message>
        <source>Smart Inbox</source>
        <translation>Smarter Eingang</translation>
    </message>
    <message>
        <source>Duplicates</source>
        <translation>Duplikate</translation>
    </message>
    <message>
        <source>Big Files</source>
        <translation>Große Dateien</translation>
    </message>
    <message>
        <source>Rules</source>
        <translation>Regeln</translation>
    </message>
    <message>
        <source>History</source>
        <translation>Verlauf</translation>
    </message>
    <message>
        <source>Recovery Center</source>
        <translation>Wiederherstellung</translation>
    </message>
</context>
<context>
    <name>Segments</name>
    <message>
        <source>More</source>
        <translation>Mehr</translation>
    </message>
</context>
<context>
    <name>SettingsView</name>
    <message>
        <source>Settings</source>
        <translation>Einstellungen</translation>
    </message>
    <message>
        <source>This setting couldn&apos;t be saved. It holds until you quit ordovan+.</source>
        <translation>Diese Einstellung ließ sich nicht speichern. Sie gilt, bis Sie ordovan+ beenden.</translation>
    </message>
    <message>
        <source>Settings only change the preview. Nothing moves until you choose Organize.</source>
        <translation>Einstellungen ändern nur die Vorschau. Nichts wird verschoben, bevor Sie es einsortieren lassen.</translation>
    </message>
    <message>
        <source>Organizing</source>
        <translation>Einsortieren</translation>
    </message>
    <message>
        <source>Theme</source>
        <translation>Farbe</translation>
    </message>
    <message>
        <source>Group files by month</source>
        <translation>Dateien nach Monaten ordnen</translation>
    </message>
    <message>
        <source>Files go into a dated folder, for example %1/Images/2026-10.</source>
        <translation>Dateien kommen in einen Ordner mit Datum, zum Beispiel %1/Images/2026-10.</translation>
    </message>
    <message>
        <source>Include hidden files</source>
        <translation>Verborgene Dateien einbeziehen</translation>
    </message>
    <message>
        <source>Hidden files (names starting with a dot) are left out by default.</source>
        <translation>Verborgene Dateien (ihr Name beginnt mit einem Punkt) bleiben sonst außen vor.</translation>
    </message>
</context>
<context>
    <name>Sheet</name>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>Sidebar</name>
    <message>
        <source>Sections</source>
        <translation>Bereiche</translation>
    </message>
    <message>
        <source>Ctrl+%1</source>
        <translation>Strg+%1</translation>
    </message>
</context>
<context>
    <name>SmartInboxNotices</name>
    <message>
        <source>Undo</source>
        <translation>Rückgängig</translation>
    </message>
    <message>
        <source>Puts the files of this run back where they came from.</source>
        <translation>Legt die Dateien dieses Durchlaufs dorthin zurück, woher sie kamen.</translation>
    </message>
    <message>
        <source>The plan was saved.</source>
        <translation>Der Plan wurde gespeichert.</translation>
    </message>
</context>
<context>
    <name>SmartInboxPlan</name>
    <message>
        <source>Tick only files last changed more than this long ago</source>
        <translation>Nur Dateien auswählen, deren letzte Änderung länger zurückliegt</translation>
    </message>
    <message>
        <source>Search proposed files</source>
        <translation>Vorgeschlagene durchsuchen</translation>
    </message>
    <message>
        <source>Folder to sort into</source>
        <translation>Zielordner</translation>
    </message>
    <message>
        <source>Export Plan…</source>
        <translation>Plan exportieren…</translation>
    </message>
    <message>
        <source>Older than…</source>
        <translation>Älter als…</translation>
    </message>
    <message numerus="yes">
        <source>Older than %1 days</source>
        <translation>
            <numerusform>Älter als %1 Tag</numerusform>
            <numerusform>Älter als %1 Tage</numerusform>
        </translation>
    </message>
    <message>
        <source>Proposed file changes</source>
        <translation>Vorgeschlagene Änderungen</translation>
    </message>
    <message>
        <source>No matching files</source>
        <translation>Keine passenden Dateien</translation>
    </message>
    <message>
        <source>No file of this preview matches the search.</source>
        <translation>Keine Datei dieser Vorschau passt zur Suche.</translation>
    </message>
    <message>
        <source>Show All Files</source>
        <translation>Alle Dateien zeigen</translation>
    </message>
    <message>
        <source>All folders</source>
        <translation>Alle Ordner</translation>
    </message>
    <message>
        <source>Shows all folders</source>
        <translation>Zeigt alle Ordner</translation>
    </message>
    <message>
        <source>Shows only this folder</source>
        <translation>Zeigt nur diesen Ordner</translation>
    </message>
    <message>
        <source>proposed, %1 ticked</source>
        <translation>vorgeschlagen, %1 ausgewählt</translation>
    </message>
    <message>
        <source>need review</source>
        <translation>zu prüfen</translation>
    </message>
    <message numerus="yes">
        <source>folders to sort into</source>
        <translation>
            <numerusform>Zielordner</numerusform>
            <numerusform>Zielordner</numerusform>
        </translation>
    </message>
    <message>
        <source>in ticked files</source>
        <translation>in der Auswahl</translation>
    </message>
    <message numerus="yes">
        <source>%1 of them not shown</source>
        <translation>
            <numerusform>davon %1 nicht zu sehen</numerusform>
            <numerusform>davon %1 nicht zu sehen</numerusform>
        </translation>
    </message>
    <message>
        <source>No files ticked</source>
        <translation>Keine Dateien ausgewählt</translation>
    </message>
    <message>
        <source>Tick None</source>
        <translation>Keine auswählen</translation>
    </message>
    <message>
        <source>Tick All</source>
        <translation>Alle auswählen</translation>
    </message>
    <message>
        <source>Move the selected files. You will be asked to confirm, and can undo afterward.</source>
        <translation>Verschiebt die ausgewählten Dateien. Sie werden vorher gefragt und können es danach rückgängig machen.</translation>
    </message>
    <message>
        <source>Save this preview as a Markdown or CSV report</source>
        <translation>Diese Vorschau als Bericht in Markdown oder CSV speichern</translation>
    </message>
    <message>
        <source>Ticks or unticks the files that are shown</source>
        <translation>Gilt für die Dateien, die gerade zu sehen sind</translation>
    </message>
    <message>
        <source>No proposed file is shown.</source>
        <translation>Gerade ist keine vorgeschlagene Datei zu sehen.</translation>
    </message>
</context>
<context>
    <name>SmartInboxTexts</name>
    <message numerus="yes">
        <source>Organize %1 Files</source>
        <translation>
            <numerusform>%1 Datei einsortieren</numerusform>
            <numerusform>%1 Dateien einsortieren</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Organize %1 Files…</source>
        <translation>
            <numerusform>%1 Datei einsortieren…</numerusform>
            <numerusform>%1 Dateien einsortieren…</numerusform>
        </translation>
    </message>
    <message>
        <source>Nothing to organize</source>
        <translation>Nichts einzusortieren</translation>
    </message>
    <message>
        <source>This folder already looks tidy, or has no supported files.</source>
        <translation>Dieser Ordner ist schon aufgeräumt oder enthält nichts, was sich einsortieren lässt.</translation>
    </message>
    <message numerus="yes">
        <source>%1 in %2 folders</source>
        <extracomment>&quot;12 files&quot;, and the folders they are in</extracomment>
        <translation>
            <numerusform>%1 in %2 Ordner</numerusform>
            <numerusform>%1 in %2 Ordnern</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>SmartInboxView</name>
    <message>
        <source>Smart Inbox</source>
        <translation>Smarter Eingang</translation>
    </message>
    <message>
        <source>Choose Folder…</source>
        <translation>Ordner wählen…</translation>
    </message>
    <message>
        <source>Previewing folder, reading metadata only.</source>
        <translation>Die Vorschau des Ordners entsteht, gelesen werden nur Metadaten.</translation>
    </message>
    <message>
        <source>Previewing — reading metadata only…</source>
        <translation>Vorschau – nur Metadaten werden gelesen…</translation>
    </message>
    <message>
        <source>Couldn&apos;t preview this folder</source>
        <translation>Von diesem Ordner gibt es keine Vorschau</translation>
    </message>
    <message>
        <source>Try Another Folder</source>
        <translation>Anderen Ordner wählen</translation>
    </message>
    <message>
        <source>ordovan+ previews this folder read-only. Nothing changes until you apply.</source>
        <translation>ordovan+ zeigt nur eine Vorschau. Nichts ändert sich, bevor Sie es sagen.</translation>
    </message>
    <message>
        <source>Scan reached its limit; results are partial.</source>
        <translation>Die Suche hat ihre Grenze erreicht; zu sehen ist nur ein Teil.</translation>
    </message>
    <message>
        <source>Organizing files…</source>
        <translation>Dateien werden einsortiert…</translation>
    </message>
    <message>
        <source>Putting files back…</source>
        <translation>Dateien werden zurückgelegt…</translation>
    </message>
    <message>
        <source>Organize these files?</source>
        <translation>Diese Dateien einsortieren?</translation>
    </message>
    <message>
        <source>Files move into the %1 folder inside this folder. Nothing is copied or deleted, and you can undo this from the Recovery Center.</source>
        <translation>Die Dateien kommen in den Ordner %1 innerhalb dieses Ordners. Nichts wird kopiert oder gelöscht, und über die Wiederherstellung können Sie es rückgängig machen.</translation>
    </message>
    <message>
        <source>Applying is explicit and reversible</source>
        <translation>Nur auf Ihre Anweisung, und umkehrbar</translation>
    </message>
    <message>
        <source>Cross-volume moves are copy-verified before removal</source>
        <translation>Auf andere Datenträger: erst kopieren und prüfen, dann entfernen</translation>
    </message>
    <message>
        <source>A report of the preview. Nothing is moved.</source>
        <translation>Ein Bericht der Vorschau. Nichts wird verschoben.</translation>
    </message>
    <message>
        <source>ordovan+ plan – %1</source>
        <translation>ordovan+ Plan – %1</translation>
    </message>
    <message>
        <source>Preview Again</source>
        <translation>Vorschau erneuern</translation>
    </message>
    <message>
        <source>“%1” is gone, is no folder, or may not be read.</source>
        <translation>„%1“ gibt es nicht mehr, ist kein Ordner oder darf nicht gelesen werden.</translation>
    </message>
</context>
<context>
    <name>SmartInboxWelcome</name>
    <message>
        <source>Recent</source>
        <translation>Zuletzt</translation>
    </message>
    <message>
        <source>Start with your Downloads folder</source>
        <translation>Beginnen Sie mit Ihren Downloads</translation>
    </message>
    <message>
        <source>ordovan+ reads file names and types only, shows you a plan, and moves nothing until you say so.</source>
        <translation>ordovan+ liest nur Namen und Typen der Dateien, zeigt Ihnen einen Plan und verschiebt nichts, bevor Sie es sagen.</translation>
    </message>
    <message>
        <source>See where every file would go. Read-only.</source>
        <translation>Sehen, wohin jede Datei käme. Nur lesend.</translation>
    </message>
    <message>
        <source>Untick anything you want left alone.</source>
        <translation>Abwählen, was liegen bleiben soll.</translation>
    </message>
    <message>
        <source>Every run is journaled and reversible.</source>
        <translation>Jeder Durchlauf ist vermerkt und umkehrbar.</translation>
    </message>
    <message>
        <source>Choose Folder…</source>
        <translation>Ordner wählen…</translation>
    </message>
    <message>
        <source>or drag a folder here</source>
        <translation>oder ziehen Sie einen Ordner hierher</translation>
    </message>
</context>
<context>
    <name>SpaceTexts</name>
    <message>
        <source>%1 of %2</source>
        <extracomment>A size and a larger one</extracomment>
        <translation>%1 von %2</translation>
    </message>
    <message>
        <source>%1/s</source>
        <extracomment>A size read in a second</extracomment>
        <translation>%1/s</translation>
    </message>
</context>
<context>
    <name>SystemDesktop</name>
    <message>
        <source>Choose Folder</source>
        <translation>Ordner wählen</translation>
    </message>
</context>
<context>
    <name>Theme</name>
    <message>
        <source>Teal</source>
        <translation>Petrol</translation>
    </message>
    <message>
        <source>Sunset</source>
        <translation>Abendrot</translation>
    </message>
    <message>
        <source>Grape</source>
        <translation>Traube</translation>
    </message>
    <message>
        <source>Forest</source>
        <translation>Wald</translation>
    </message>
    <message>
        <source>Candy</source>
        <translation>Bonbon</translation>
    </message>
</context>
<context>
    <name>TrashNotices</name>
    <message>
        <source>Open Recovery Center</source>
        <translation>Wiederherstellung öffnen</translation>
    </message>
    <message>
        <source>Shows the files that can be put back</source>
        <translation>Zeigt die Dateien, die sich zurücklegen lassen</translation>
    </message>
    <message numerus="yes">
        <source>%1 files moved to the Trash · %2</source>
        <translation>
            <numerusform>%1 Datei in den Papierkorb gelegt · %2</numerusform>
            <numerusform>%1 Dateien in den Papierkorb gelegt · %2</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 extras moved to the Trash · %2</source>
        <translation>
            <numerusform>%1 überzählige Kopie in den Papierkorb gelegt · %2</numerusform>
            <numerusform>%1 überzählige Kopien in den Papierkorb gelegt · %2</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>TrayItem</name>
    <message>
        <source>No files can be changed by this version without your confirmation.</source>
        <translation>Ohne Ihre Zustimmung ändert diese Version keine Dateien.</translation>
    </message>
    <message>
        <source>Open ordovan+</source>
        <translation>ordovan+ öffnen</translation>
    </message>
    <message>
        <source>Quit ordovan+</source>
        <translation>ordovan+ beenden</translation>
    </message>
    <message>
        <source>ordovan+ — preview first</source>
        <translation>ordovan+ – erst die Vorschau</translation>
    </message>
</context>
</TS>
