<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
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
        <translation>Musik und Ton</translation>
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
        <translation>Eine andere Datei käme an denselben Ort. Das entscheiden Sie; die Datei bleibt unberührt.</translation>
    </message>
    <message>
        <source>A file already exists at the destination. Will not overwrite; left untouched.</source>
        <translation>Am Ziel gibt es schon eine Datei. Sie wird nicht überschrieben; diese hier bleibt unberührt.</translation>
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
        <source>&quot;%1&quot; isn&apos;t a valid extension. Use letters and numbers only, like dmg.</source>
        <translation>„%1“ ist keine gültige Endung. Verwenden Sie nur Buchstaben und Ziffern, etwa dmg.</translation>
    </message>
    <message>
        <source>Give the folder a name.</source>
        <translation>Geben Sie dem Ordner einen Namen.</translation>
    </message>
    <message>
        <source>Folder names can&apos;t contain / or :, start with a dot, or be longer than 64 characters.</source>
        <translation>Ordnernamen dürfen weder / noch : enthalten, nicht mit einem Punkt beginnen und höchstens 64 Zeichen lang sein.</translation>
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
        <source>Files are being organized or put back. Try again when that has finished.</source>
        <translation>Gerade werden Dateien einsortiert oder zurückgelegt. Versuchen Sie es danach noch einmal.</translation>
    </message>
    <message>
        <source>Files are on their way to or from the Trash. Try again when that has finished.</source>
        <translation>Dateien sind gerade auf dem Weg in den Papierkorb oder zurück. Versuchen Sie es danach noch einmal.</translation>
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
            <numerusform>%1 doppelte Datei aus „%2“ in den Papierkorb gelegt</numerusform>
            <numerusform>%1 doppelte Dateien aus „%2“ in den Papierkorb gelegt</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Put back %1 files from the Trash in %2</source>
        <translation>
            <numerusform>%1 Datei aus dem Papierkorb nach „%2“ zurückgelegt</numerusform>
            <numerusform>%1 Dateien aus dem Papierkorb nach „%2“ zurückgelegt</numerusform>
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
        <translation>%1 vorgeschlagen · %2 zu prüfen</translation>
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
            <numerusform>%1 Datei im Papierkorb lässt sich zurücklegen (aus Duplikate oder Große Dateien).</numerusform>
            <numerusform>%1 Dateien im Papierkorb lassen sich zurücklegen (aus Duplikate oder Große Dateien).</numerusform>
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
        <translation>Diese Datei ist nicht mehr da: seit dem Einsortieren gelöscht oder verschoben. Beim Rückgängigmachen wird sie übersprungen.</translation>
    </message>
    <message>
        <source>The record names a place outside this folder or behind a link. Undo will refuse it.</source>
        <translation>Das Protokoll nennt einen Ort außerhalb dieses Ordners oder hinter einem Link. Das Rückgängigmachen wird abgelehnt.</translation>
    </message>
    <message>
        <source>%1 · Undo returns it to %2</source>
        <extracomment>Where an organized file lies, and the folder that it came from</extracomment>
        <translation>%1 · Rückgängig legt sie zurück nach %2</translation>
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
        <translation>Nicht mehr im Papierkorb (geleert oder verschoben), lässt sich also von hier nicht zurücklegen.</translation>
    </message>
    <message>
        <source>The record names a place that is in no Trash or behind a link. Restore will refuse it.</source>
        <translation>Das Protokoll nennt einen Ort in keinem Papierkorb oder hinter einem Link. Das Zurücklegen wird abgelehnt.</translation>
    </message>
    <message>
        <source>In the Trash · %1 · Put Back returns it to %2</source>
        <extracomment>The size of a file, and the folder that it came from</extracomment>
        <translation>Im Papierkorb · %1 · Zurücklegen bringt sie nach %2</translation>
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
    <name>Segments</name>
    <message>
        <source>More</source>
        <translation>Mehr</translation>
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
</TS>
