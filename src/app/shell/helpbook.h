#pragma once

// The help book (HTML pages compiled into the application's resources and installed beside it) and
// the opening of URLs in the person's preferred applications.

#include <QString>

#include "util/status.h"

namespace sylvora::app {

// The book's resource folder: the role of the bundle's "CFBundleHelpBookName".
inline constexpr const char* HELP_BOOK_RESOURCE_ROOT = ":/help";
inline constexpr const char* HELP_BOOK_START_PAGE = "index.html";

// [main] Copies the book to the user's cache folder (a browser cannot read Qt resources) and opens
// `pagePath` at `anchor` (may be empty) in the browser; where no browser can be asked, in a window
// of Sylvora's own. fnfErr when there is no book or no such page.
OSStatus myGotoHelpPage(const QString& pagePath, const QString& anchor);

// [main] Opens a complete URL with the desktop's handler. A URL that is not ASCII or is longer than
// 255 characters, or that nothing opens, beeps instead.
void openURL(const QString& url);

}  // namespace sylvora::app
