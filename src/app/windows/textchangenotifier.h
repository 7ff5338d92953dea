#pragma once

// Makes a text field announce every change a person makes to its text (typing, paste, drop,
// deletion) to the window that owns it, through the event loop: the window's handleTextChanged
// runs after the edit, never inside it, and never for text the program puts into the field.
//
// Works on QLineEdit (whose textEdited already means "by the user") and on QPlainTextEdit and
// QTextEdit, whose own signal also fires for the program's text; those are given text through
// setTextWithoutNotice so the notice stays the user's.

#include <QString>

class QWidget;

namespace sylvora::app {

class TextChangeNotifier {
public:
    // [main]
    static void installTextChangeNotifier(QWidget* control);
    // [main] Posts the text-changed notice of `control` to its window.
    static void PostTextChanged(QWidget* control);
    // [main] Replaces a field's text without a notice.
    static void setTextWithoutNotice(QWidget* control, const QString& text);
};

}  // namespace sylvora::app
