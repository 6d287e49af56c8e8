<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
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
</TS>
