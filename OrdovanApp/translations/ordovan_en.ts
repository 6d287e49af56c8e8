<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>BigFilesView</name>
    <message numerus="yes">
        <source>largest files</source>
        <translation>
            <numerusform>largest file</numerusform>
            <numerusform>largest files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>in the largest files</source>
        <translation>
            <numerusform>in the largest file</numerusform>
            <numerusform>in the largest files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of them not shown</source>
        <translation>
            <numerusform>%1 of them not shown</numerusform>
            <numerusform>%1 of them not shown</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Move %1 files to the Trash?</source>
        <translation>
            <numerusform>Move %1 file to the Trash?</numerusform>
            <numerusform>Move %1 files to the Trash?</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Move %1 files to Trash</source>
        <translation>
            <numerusform>Move %1 file to Trash</numerusform>
            <numerusform>Move %1 files to Trash</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>ContentView</name>
    <message numerus="yes">
        <source>%1 proposed</source>
        <translation>
            <numerusform>%1 proposed</numerusform>
            <numerusform>%1 proposed</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 groups</source>
        <translation>
            <numerusform>%1 group</numerusform>
            <numerusform>%1 groups</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 items to recover</source>
        <translation>
            <numerusform>%1 item to recover</numerusform>
            <numerusform>%1 items to recover</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 rules</source>
        <translation>
            <numerusform>%1 rule</numerusform>
            <numerusform>%1 rules</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>DuplicatesModel</name>
    <message numerus="yes">
        <source>%1 identical copies · %2</source>
        <translation>
            <numerusform>%1 identical copies · %2</numerusform>
            <numerusform>%1 identical copies · %2</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>DuplicatesNotices</name>
    <message numerus="yes">
        <source>%1 files could not be read and were left out.</source>
        <translation>
            <numerusform>%1 file could not be read and was left out.</numerusform>
            <numerusform>%1 files could not be read and were left out.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>DuplicatesView</name>
    <message numerus="yes">
        <source>%1 extras</source>
        <translation>
            <numerusform>%1 extra</numerusform>
            <numerusform>%1 extras</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of them not shown</source>
        <translation>
            <numerusform>%1 of them not shown</numerusform>
            <numerusform>%1 of them not shown</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>duplicate groups</source>
        <translation>
            <numerusform>duplicate groups</numerusform>
            <numerusform>duplicate groups</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>extras</source>
        <translation>
            <numerusform>extra</numerusform>
            <numerusform>extras</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>files compared</source>
        <translation>
            <numerusform>files compared</numerusform>
            <numerusform>files compared</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Move %1 Extras to Trash</source>
        <translation>
            <numerusform>Move %1 Extra to Trash</numerusform>
            <numerusform>Move %1 Extras to Trash</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>EngineTexts</name>
    <message numerus="yes">
        <source>Organized %1 files in %2</source>
        <translation>
            <numerusform>Organized %1 file in %2</numerusform>
            <numerusform>Organized %1 files in %2</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Restored %1 files in %2</source>
        <translation>
            <numerusform>Restored %1 file in %2</numerusform>
            <numerusform>Restored %1 files in %2</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Moved %1 duplicate files to the Trash in %2</source>
        <translation>
            <numerusform>Moved %1 duplicate file to the Trash in %2</numerusform>
            <numerusform>Moved %1 duplicate files to the Trash in %2</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Put back %1 files from the Trash in %2</source>
        <translation>
            <numerusform>Put back %1 file from the Trash in %2</numerusform>
            <numerusform>Put back %1 files from the Trash in %2</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 files were finished</source>
        <translation>
            <numerusform>%1 file was finished</numerusform>
            <numerusform>%1 files were finished</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 were finished</source>
        <translation>
            <numerusform>%1 was finished</numerusform>
            <numerusform>%1 were finished</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 files were left untouched</source>
        <translation>
            <numerusform>%1 file was left untouched</numerusform>
            <numerusform>%1 files were left untouched</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 were left untouched</source>
        <translation>
            <numerusform>%1 was left untouched</numerusform>
            <numerusform>%1 were left untouched</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 files were put right</source>
        <translation>
            <numerusform>%1 file was put right</numerusform>
            <numerusform>%1 files were put right</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 were put right</source>
        <translation>
            <numerusform>%1 was put right</numerusform>
            <numerusform>%1 were put right</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 files need a look</source>
        <translation>
            <numerusform>%1 file needs a look</numerusform>
            <numerusform>%1 files need a look</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 need a look</source>
        <translation>
            <numerusform>%1 needs a look</numerusform>
            <numerusform>%1 need a look</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>Formats</name>
    <message numerus="yes">
        <source>%1 bytes</source>
        <translation>
            <numerusform>%1 byte</numerusform>
            <numerusform>%1 bytes</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 files</source>
        <translation>
            <numerusform>%1 file</numerusform>
            <numerusform>%1 files</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>HistoryModel</name>
    <message numerus="yes">
        <source>%1 skipped</source>
        <translation>
            <numerusform>%1 skipped</numerusform>
            <numerusform>%1 skipped</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 failed</source>
        <translation>
            <numerusform>%1 failed</numerusform>
            <numerusform>%1 failed</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>RecoveryModel</name>
    <message numerus="yes">
        <source>%1 organized files can go back to where they came from.</source>
        <translation>
            <numerusform>%1 organized file can go back to where they came from.</numerusform>
            <numerusform>%1 organized files can go back to where they came from.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 files in the Trash can be put back (from Duplicates or Big Files).</source>
        <translation>
            <numerusform>%1 file in the Trash can be put back (from Duplicates or Big Files).</numerusform>
            <numerusform>%1 files in the Trash can be put back (from Duplicates or Big Files).</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>RecoveryView</name>
    <message numerus="yes">
        <source>%1 files came from other folders. Choose their folder to put them back.</source>
        <translation>
            <numerusform>%1 file came from another folder. Choose that folder to put it back.</numerusform>
            <numerusform>%1 files came from other folders. Choose their folder to put them back.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 organized files can go back to where they came from.</source>
        <translation>
            <numerusform>%1 organized file can go back to where they came from.</numerusform>
            <numerusform>%1 organized files can go back to where they came from.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 files can go back from the Trash. A file whose original place is now occupied stays in the Trash.</source>
        <translation>
            <numerusform>%1 file can go back from the Trash. A file whose original place is now occupied stays in the Trash.</numerusform>
            <numerusform>%1 files can go back from the Trash. A file whose original place is now occupied stays in the Trash.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>RunTexts</name>
    <message numerus="yes">
        <source>Put back %1 files from the Trash.</source>
        <translation>
            <numerusform>Put back %1 file from the Trash.</numerusform>
            <numerusform>Put back %1 files from the Trash.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Put back %1 files from the Trash; %2.</source>
        <translation>
            <numerusform>Put back %1 file from the Trash; %2.</numerusform>
            <numerusform>Put back %1 files from the Trash; %2.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of %2 files</source>
        <translation>
            <numerusform>%1 of %2 file</numerusform>
            <numerusform>%1 of %2 files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 skipped</source>
        <translation>
            <numerusform>%1 skipped</numerusform>
            <numerusform>%1 skipped</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 failed</source>
        <translation>
            <numerusform>%1 failed</numerusform>
            <numerusform>%1 failed</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Last organize run moved %1 files.</source>
        <translation>
            <numerusform>Last organize run moved %1 file.</numerusform>
            <numerusform>Last organize run moved %1 files.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Last organize run moved %1 files; %2.</source>
        <translation>
            <numerusform>Last organize run moved %1 file; %2.</numerusform>
            <numerusform>Last organize run moved %1 files; %2.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Last undo run put back %1 files.</source>
        <translation>
            <numerusform>Last undo run put back %1 file.</numerusform>
            <numerusform>Last undo run put back %1 files.</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Last undo run put back %1 files; %2.</source>
        <translation>
            <numerusform>Last undo run put back %1 file; %2.</numerusform>
            <numerusform>Last undo run put back %1 files; %2.</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>SmartInboxPlan</name>
    <message numerus="yes">
        <source>Older than %1 days</source>
        <translation>
            <numerusform>Older than %1 day</numerusform>
            <numerusform>Older than %1 days</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>folders to sort into</source>
        <translation>
            <numerusform>folder to sort into</numerusform>
            <numerusform>folders to sort into</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 of them not shown</source>
        <translation>
            <numerusform>%1 of them not shown</numerusform>
            <numerusform>%1 of them not shown</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>SmartInboxTexts</name>
    <message numerus="yes">
        <source>Organize %1 Files</source>
        <translation>
            <numerusform>Organize %1 File</numerusform>
            <numerusform>Organize %1 Files</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>Organize %1 Files…</source>
        <translation>
            <numerusform>Organize %1 File…</numerusform>
            <numerusform>Organize %1 Files…</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 in %2 folders</source>
        <extracomment>&quot;12 files&quot;, and the folders they are in</extracomment>
        <translation>
            <numerusform>%1 in %2 folder</numerusform>
            <numerusform>%1 in %2 folders</numerusform>
        </translation>
    </message>
</context>
<context>
    <name>TrashNotices</name>
    <message numerus="yes">
        <source>%1 files moved to the Trash · %2</source>
        <translation>
            <numerusform>%1 file moved to the Trash · %2</numerusform>
            <numerusform>%1 files moved to the Trash · %2</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%1 extras moved to the Trash · %2</source>
        <translation>
            <numerusform>%1 extra moved to the Trash · %2</numerusform>
            <numerusform>%1 extras moved to the Trash · %2</numerusform>
        </translation>
    </message>
</context>
</TS>
