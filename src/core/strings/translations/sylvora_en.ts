<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>Errors</name>
    <message>
        <source>Error Opening World</source>
        <translation>The world could not be opened.</translation>
    </message>
    <message>
        <source>Error Saving World</source>
        <translation>The world could not be saved.</translation>
    </message>
    <message>
        <source>Error Saving Named World</source>
        <translation>“%1” could not be saved.</translation>
    </message>
    <message>
        <source>Error Saving World Missing File</source>
        <extracomment>%1 is the world's name, %2 the file name of the missing sound or picture</extracomment>
        <translation>“%1” could not be saved: “%2” is missing.</translation>
    </message>
    <message>
        <source>Previous Version Kept</source>
        <translation>The disk could not confirm that the new version is stored, so the previous version of the world is kept at “%1”.</translation>
    </message>
    <message>
        <source>Status -34</source>
        <translation>the disk is full</translation>
    </message>
    <message>
        <source>Status -35</source>
        <translation>the drive that holds it is not connected</translation>
    </message>
    <message>
        <source>Status -36</source>
        <translation>a file could not be read or written</translation>
    </message>
    <message>
        <source>Status -43</source>
        <translation>a file it needs is missing</translation>
    </message>
    <message>
        <source>Status -44</source>
        <translation>the disk is read-only</translation>
    </message>
    <message>
        <source>Status -48</source>
        <translation>something of that name is already there</translation>
    </message>
    <message>
        <source>Status -50</source>
        <translation>a name or value is not acceptable</translation>
    </message>
    <message>
        <source>Status -54</source>
        <translation>the folder or file is read-only for you</translation>
    </message>
    <message>
        <source>Status -128</source>
        <translation>it was interrupted</translation>
    </message>
    <message>
        <source>Status -120</source>
        <translation>a folder it needs is missing</translation>
    </message>
    <message>
        <source>Status -1</source>
        <translation>its description (data.plist) is damaged or not a property list</translation>
    </message>
    <message>
        <source>Status 32767</source>
        <translation>the world has too many sounds to play at once</translation>
    </message>
    <message>
        <source>Unexplained Status</source>
        <extracomment>%1 is the status number</extracomment>
        <translation>error %1</translation>
    </message>
    <message>
        <source>World Could Not Be Opened</source>
        <extracomment>%1 is the world's name</extracomment>
        <translation>“%1” could not be opened.</translation>
    </message>
    <message>
        <source>World Could Not Be Opened Because</source>
        <extracomment>%1 is the world's name, %2 the reason</extracomment>
        <translation>“%1” could not be opened: %2</translation>
    </message>
    <message>
        <source>Reason Damaged Data File</source>
        <translation>its data file is damaged.</translation>
    </message>
    <message>
        <source>Reason Missing Data File</source>
        <translation>its data file is missing.</translation>
    </message>
    <message>
        <source>Reason Missing Sound Folder</source>
        <extracomment>%1 is the folder's name</extracomment>
        <translation>its folder “%1” is missing.</translation>
    </message>
    <message>
        <source>Reason Missing Package</source>
        <translation>it is no longer there.</translation>
    </message>
</context>
<context>
    <name>Misc</name>
    <message>
        <source>Untitled SaveAs Filename</source>
        <translation>Untitled</translation>
    </message>
    <message>
        <source>Environment Sound Group Name</source>
        <extracomment>%1 is the number of groups created so far plus one</extracomment>
        <translation>Group %1</translation>
    </message>
    <message>
        <source>No Picture File Selected</source>
        <translation>No Picture File Selected</translation>
    </message>
    <message>
        <source>Select a picture file to represent this world</source>
        <translation>Select a picture file to represent this world</translation>
    </message>
    <message>
        <source>Select Looping Sound Files</source>
        <translation>Select Looping Sound Files</translation>
    </message>
    <message>
        <source>Select Environment Sound Files</source>
        <translation>Select Environment Sound Files</translation>
    </message>
    <message>
        <source>World Info</source>
        <extracomment>%1 is the name of the world</extracomment>
        <translation>%1 Info</translation>
    </message>
    <message>
        <source>Untitled World Info</source>
        <translation>Untitled World Info</translation>
    </message>
    <message>
        <source>CreatingAWorld.html</source>
        <translation>CreatingAWorld.html</translation>
    </message>
    <message>
        <source>Percent</source>
        <extracomment>%1 is a whole number of percent</extracomment>
        <translation>%1%</translation>
    </message>
    <message>
        <source>Ask Save Changes Closing</source>
        <extracomment>%1 is the world's display name</extracomment>
        <translation>Do you want to save the changes you made to the world “%1” before closing it?</translation>
    </message>
    <message>
        <source>Ask Save Changes Quitting</source>
        <extracomment>%1 is the world's display name</extracomment>
        <translation>Do you want to save the changes you made to the world “%1” before quitting?</translation>
    </message>
    <message>
        <source>Ask Save Changes Detail</source>
        <translation>Your changes will be lost if you don't save them.</translation>
    </message>
    <message>
        <source>Don't Save</source>
        <translation>Don't Save</translation>
    </message>
    <message>
        <source>Open World</source>
        <translation>Open World</translation>
    </message>
    <message>
        <source>Save World As</source>
        <translation>Save World As</translation>
    </message>
    <message>
        <source>Replace World</source>
        <translation>Replace World</translation>
    </message>
    <message>
        <source>Replace World Question</source>
        <extracomment>%1 is the file name of the package already there</extracomment>
        <translation>“%1” already exists. Do you want to replace it?</translation>
    </message>
    <message>
        <source>Restore Unsaved World Question</source>
        <extracomment>%1 is the world's name</extracomment>
        <translation>Sylvora was ended with unsaved changes to the world “%1”. Do you want to restore them?</translation>
    </message>
    <message>
        <source>Restore Unsaved World Detail</source>
        <translation>If you don't restore them, the changes are lost.</translation>
    </message>
    <message>
        <source>Restore Unsaved World</source>
        <translation>Restore</translation>
    </message>
    <message>
        <source>Discard Unsaved World</source>
        <translation>Discard Changes</translation>
    </message>
    <message>
        <source>Restored Without Sounds</source>
        <extracomment>%1 is how many sounds were left out</extracomment>
        <translation>The changes are restored, but %1 of the world's sounds are no longer on the disk and were left out.</translation>
    </message>
    <message>
        <source>Drop Picture Here</source>
        <translation>Drop a picture here</translation>
    </message>
</context>
</TS>
