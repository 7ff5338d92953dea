#include "app/windows/textchangenotifier.h"

#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPointer>
#include <QTextEdit>

#include "app/windows/mycarbonwindow.h"

namespace sylvora::app {

namespace {
// Set on a rich or plain text field while the program replaces its text.
constexpr const char* PROGRAM_TEXT_PROPERTY = "sylvoraProgramText";

bool settingProgramText(const QWidget* control) { return control->property(PROGRAM_TEXT_PROPERTY).toBool(); }
}  // namespace

void TextChangeNotifier::installTextChangeNotifier(QWidget* control) {
    if (auto* line = qobject_cast<QLineEdit*>(control)) {
        QObject::connect(line, &QLineEdit::textEdited, line, [line] { PostTextChanged(line); });
    } else if (auto* plain = qobject_cast<QPlainTextEdit*>(control)) {
        QObject::connect(plain, &QPlainTextEdit::textChanged, plain, [plain] {
            if (!settingProgramText(plain)) PostTextChanged(plain);
        });
    } else if (auto* rich = qobject_cast<QTextEdit*>(control)) {
        QObject::connect(rich, &QTextEdit::textChanged, rich, [rich] {
            if (!settingProgramText(rich)) PostTextChanged(rich);
        });
    }
}

void TextChangeNotifier::PostTextChanged(QWidget* control) {
    if (control == nullptr || MyCarbonWindow::fromWidget(control) == nullptr) return;
    QPointer<QWidget> target(control);
    QMetaObject::invokeMethod(
        control->window(),
        [target] {
            if (target.isNull()) return;
            if (MyCarbonWindow* owner = MyCarbonWindow::fromWidget(target)) owner->handleTextChanged(target);
        },
        Qt::QueuedConnection);
}

void TextChangeNotifier::setTextWithoutNotice(QWidget* control, const QString& text) {
    if (auto* line = qobject_cast<QLineEdit*>(control)) {
        line->setText(text);  // setText never emits textEdited
        return;
    }
    control->setProperty(PROGRAM_TEXT_PROPERTY, true);
    if (auto* plain = qobject_cast<QPlainTextEdit*>(control)) {
        plain->setPlainText(text);
    } else if (auto* rich = qobject_cast<QTextEdit*>(control)) {
        rich->setPlainText(text);
    }
    control->setProperty(PROGRAM_TEXT_PROPERTY, false);
}

}  // namespace sylvora::app
