#pragma once

// The desktop application's own keys in the "Errors" and "Misc" string tables (the core's keys are
// in core/strings/stringresources.h). As there, each key is also the text shown without a table.

namespace sylvora::app {

// "Misc": the ask-save-changes dialog. The two questions take the world's display name.
inline constexpr const char* ASK_SAVE_CHANGES_CLOSING_KEY = "Ask Save Changes Closing";
inline constexpr const char* ASK_SAVE_CHANGES_QUITTING_KEY = "Ask Save Changes Quitting";
inline constexpr const char* ASK_SAVE_CHANGES_DETAIL_KEY = "Ask Save Changes Detail";
inline constexpr const char* DONT_SAVE_BUTTON_KEY = "Don't Save";

// "Misc": the Open and Save As dialogs' titles, and the question before replacing a package (it
// takes the package's file name).
inline constexpr const char* OPEN_WORLD_TITLE_KEY = "Open World";
inline constexpr const char* SAVE_WORLD_AS_TITLE_KEY = "Save World As";
inline constexpr const char* REPLACE_WORLD_TITLE_KEY = "Replace World";
inline constexpr const char* REPLACE_WORLD_QUESTION_KEY = "Replace World Question";
// "Misc": what the empty picture well invites.
inline constexpr const char* DROP_PICTURE_HERE_KEY = "Drop Picture Here";

// "Misc": the question at launch after a run ended from outside with unsaved edits (%1 the world's
// name), its buttons, and the note when some of the world's sounds were gone (%1 how many).
inline constexpr const char* RESTORE_UNSAVED_WORLD_QUESTION_KEY = "Restore Unsaved World Question";
inline constexpr const char* RESTORE_UNSAVED_WORLD_DETAIL_KEY = "Restore Unsaved World Detail";
inline constexpr const char* RESTORE_UNSAVED_WORLD_BUTTON_KEY = "Restore Unsaved World";
inline constexpr const char* DISCARD_UNSAVED_WORLD_BUTTON_KEY = "Discard Unsaved World";
inline constexpr const char* RESTORED_WITHOUT_SOUNDS_KEY = "Restored Without Sounds";

// "Errors": the failed save's alert names the world (%1), and where the previous version was kept (%1).
inline constexpr const char* ERROR_SAVING_NAMED_WORLD_KEY = "Error Saving Named World";
inline constexpr const char* PREVIOUS_VERSION_KEPT_KEY = "Previous Version Kept";
// "Errors": a save that did not find one of the world's files names the world (%1) and the file (%2).
inline constexpr const char* ERROR_SAVING_WORLD_MISSING_FILE_KEY = "Error Saving World Missing File";

// "Errors": a world that could not be opened, named (%1) and, where it is known, why (%2).
inline constexpr const char* WORLD_NOT_OPENED_KEY = "World Could Not Be Opened";
inline constexpr const char* WORLD_NOT_OPENED_BECAUSE_KEY = "World Could Not Be Opened Because";
inline constexpr const char* REASON_DAMAGED_DATA_FILE_KEY = "Reason Damaged Data File";
inline constexpr const char* REASON_MISSING_DATA_FILE_KEY = "Reason Missing Data File";
inline constexpr const char* REASON_MISSING_SOUND_FOLDER_KEY = "Reason Missing Sound Folder";  // %1 the folder
inline constexpr const char* REASON_MISSING_PACKAGE_KEY = "Reason Missing Package";

}  // namespace sylvora::app
