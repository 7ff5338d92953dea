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
        <translation>No picture selected</translation>
    </message>
    <message>
        <source>Select a picture file to represent this world</source>
        <translation>Choose a picture to represent this world.</translation>
    </message>
    <message>
        <source>Select Looping Sound Files</source>
        <translation>Choose the sound files to play as loops.</translation>
    </message>
    <message>
        <source>Select Environment Sound Files</source>
        <translation>Choose the sound files to play as environment sounds.</translation>
    </message>
    <message>
        <source>World Info</source>
        <extracomment>%1 is the name of the world</extracomment>
        <translation>%1 Info</translation>
    </message>
    <message>
        <source>Untitled World Info</source>
        <translation>Untitled World</translation>
    </message>
    <message>
        <source>CreatingAWorld.html</source>
        <translation>CreatingAWorld.html</translation>
    </message>
</context>
</TS>
