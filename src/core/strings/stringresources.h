#pragma once

// Every user-visible text that is not part of a world is looked up by key in one of two tables,
// "Errors" and "Misc", or is a tr() text of the widget that shows it. The tables are Qt translation
// files compiled into the application, with the table name as the context: an English one holding
// every key, and one per other language laid over it, so a key a language lacks reads in English.
// The key itself is the text only when even the English table has no entry for it.

#include <QLocale>
#include <QString>

#include "util/status.h"

namespace sylvora {

inline constexpr const char* ERRORS_STRINGS_FILE = "Errors";
inline constexpr const char* MISC_STRINGS_FILE = "Misc";

inline constexpr const char* UNKNOWN_ERROR_OPENING_WORLD = "Error Opening World";
inline constexpr const char* UNKNOWN_ERROR_SAVING_WORLD = "Error Saving World";
inline constexpr const char* UNTITLED_SAVE_AS_FILENAME_KEY = "Untitled SaveAs Filename";
inline constexpr const char* DEFAULT_ENVIRONMENT_SOUND_GROUP_NAME_KEY = "Environment Sound Group Name";
inline constexpr const char* NO_PICTURE_FILE_SELECTED_KEY = "No Picture File Selected";
inline constexpr const char* SELECT_PICTURE_FILE_PROMPT_KEY = "Select a picture file to represent this world";
inline constexpr const char* SELECT_LOOPING_SOUND_FILES_PROMPT_KEY = "Select Looping Sound Files";
inline constexpr const char* SELECT_ENVIRONMENT_SOUND_FILES_PROMPT_KEY = "Select Environment Sound Files";
inline constexpr const char* GET_INFO_WINDOW_TITLE_FORMAT_STRING_KEY = "World Info";
inline constexpr const char* GET_INFO_WINDOW_UNTITLED_TITLE_STRING_KEY = "Untitled World Info";
inline constexpr const char* HELP_PAGE_CREATING_A_WORLD_KEY = "CreatingAWorld.html";
// A whole percentage (%1), as the language writes it ("80%", "80 %").
inline constexpr const char* PERCENT_FORMAT_KEY = "Percent";

// "Errors": what a status means, as words that fit inside a sentence ("the disk is full"). The key
// is "Status" and the number; a status without words is said as "error" and its number (%1).
inline constexpr const char* STATUS_EXPLANATION_KEY_FORMAT = "Status %1";
inline constexpr const char* UNEXPLAINED_STATUS_KEY = "Unexplained Status";

inline constexpr const char* EMPTY_STRING = "";
inline constexpr const char* INTEGER_FORMAT_STRING = "%d";

// The value of `key` in `table` for the user's language, or the key itself.
QString copyLocalizedString(const char* key, const char* table);

// What a status means in the user's language ("the disk is full"); empty for a status the tables
// have no words for.
QString copyStatusExplanation(OSStatus status);
// A status as a person reads it, its meaning first and the number after it: "the disk is full
// (-34)", or "error -12345" when there are no words for it. Both the alerts and sylvora-cli say
// failures this way.
QString copyStatusDescription(OSStatus status);
// `text` with its first letter in upper case, for a phrase that opens a sentence of its own.
QString capitalizedFirstLetter(const QString& text);
// `value` percent with the digits and sign of the default locale.
QString percentText(int value);

// Loads the compiled tables into the running QCoreApplication for `locale`'s languages: the English
// table always, the first of the locale's languages that has a table of its own over it, and Qt's
// own texts for that language (the standard dialogs' buttons) where the system has them. The
// default locale follows the desktop (LANGUAGE, LC_ALL, LC_MESSAGES, LANG). Returns false when not
// even the English table loads (lookups then fall back to the keys). Calling it again with another
// locale replaces the tables; texts already on screen keep their language.
bool installStringTables(const QLocale& locale = QLocale());

}  // namespace sylvora
