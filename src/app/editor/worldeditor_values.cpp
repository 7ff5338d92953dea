// The sliders and number fields: every move and every keystroke is written into the world at
// once, and a minimum and its maximum are kept in order. Comparisons use each slider's reference
// value (the number last applied to or read from the world), never its displayed value, because
// a typed number may lie beyond the slider's end.

#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSlider>
#include <QTimer>
#include <algorithm>
#include <climits>
#include <optional>

#include "app/editor/worldeditorwindow.h"
#include "app/shell/globals.h"
#include "app/windows/textchangenotifier.h"
#include "core/files/utils.h"
#include "core/platform/beep.h"
#include "core/strings/stringresources.h"

namespace sylvora::app {

namespace {
constexpr CommandID WET1 = fourCharCode("WET1");
constexpr CommandID WET2 = fourCharCode("WET2");
constexpr CommandID WET4 = fourCharCode("WET4");
constexpr const char* REFERENCE = "reference";

int referenceOf(const QSlider* slider) { return slider->property(REFERENCE).toInt(); }
void setReference(QSlider* slider, int value) { slider->setProperty(REFERENCE, value); }


// The whole number a person typed, as the platform reads integer text: digits with an optional
// minus sign, clamped to 32 bits. Null when the text is not one.
std::optional<long long> typedInteger(const QString& text) {
    const QString trimmed = text.trimmed();
    if (!isValidIntegerCFString(trimmed)) return std::nullopt;
    bool ok = false;
    long long value = trimmed.toLongLong(&ok);
    if (!ok) value = trimmed.startsWith(u'-') ? INT_MIN : INT_MAX;
    return std::clamp<long long>(value, INT_MIN, INT_MAX);
}
}  // namespace

void WorldEditorWindow::wireSliders() {
    for (QSlider* slider : {c.loopVolume, c.crossfade, c.minVolume, c.maxVolume, c.minInterval, c.maxInterval}) {
        setReference(slider, slider->value());
        slider->setTracking(true);  // a value for every position reached while dragging
        const QMetaObject::Connection handler = attachSliderHandler(slider);
        if (slider == c.crossfade) crossfadeSliderHandler = handler;
        if (slider == c.minInterval) minIntervalSliderHandler = handler;
        if (slider == c.maxInterval) maxIntervalSliderHandler = handler;
    }
    // The percent beside each volume slider only shows what the slider shows.
    for (auto [slider, name] : {std::pair{c.loopVolume, "loopVolumeValue"}, std::pair{c.minVolume, "minVolumeValue"},
                                std::pair{c.maxVolume, "maxVolumeValue"}}) {
        if (auto* label = window->findChild<QLabel*>(QLatin1String(name))) {
            label->setText(percentText(slider->value()));
            QObject::connect(slider, &QSlider::valueChanged, label,
                             [label](int value) { label->setText(percentText(value)); });
        }
    }
}

QMetaObject::Connection WorldEditorWindow::attachSliderHandler(QSlider* slider) {
    return QObject::connect(slider, &QSlider::valueChanged, window, [this, slider] { liveSliderEventHandler(slider); });
}

void WorldEditorWindow::syncEditTextWithSlider(QSlider* slider, QLineEdit* field) {
    TextChangeNotifier::setTextWithoutNotice(field, QString::asprintf(INTEGER_FORMAT_STRING, referenceOf(slider)));
}

void WorldEditorWindow::liveSliderEventHandler(QSlider* slider) {
    // Showing a value is not the person's change: 0.29 shown as 28% must not become 0.28.
    if (showingSelection) return;
    const GroupID group = getSelectedEnvironmentGroupID();
    const SoundID sound = getSelectedEnvironmentSoundID();
    const SoundID loop = getSelectedLoopingSoundID();
    const int v = slider->value();
    setReference(slider, v);
    World& world = *gCurrentWorld;

    if (slider == c.loopVolume) {
        world.setLoopSoundVolume(loop, v / 100.0);
    } else if (slider == c.crossfade) {
        syncEditTextWithSlider(c.crossfade, c.crossfadeField);
        world.setLoopSoundsCrossFadeDuration(v);
    } else if (slider == c.minVolume) {
        world.setEnvironmentSoundMinVolume(sound, v / 100.0);
        if (v > referenceOf(c.maxVolume)) c.maxVolume->setValue(v);  // its own handling applies it
    } else if (slider == c.maxVolume) {
        world.setEnvironmentSoundMaxVolume(sound, v / 100.0);
        if (v < referenceOf(c.minVolume)) c.minVolume->setValue(v);
    } else if (slider == c.minInterval) {
        syncEditTextWithSlider(c.minInterval, c.minIntervalField);
        if (v > referenceOf(c.maxInterval)) {
            c.maxInterval->setValue(v);
            setReference(c.maxInterval, v);
        }
        if (sound != 0) world.setEnvironmentSoundMinInterval(sound, v);
        else world.setGroupMinInterval(group, v);
    } else if (slider == c.maxInterval) {
        syncEditTextWithSlider(c.maxInterval, c.maxIntervalField);
        if (v < referenceOf(c.minInterval)) {
            c.minInterval->setValue(v);
            setReference(c.minInterval, v);
        }
        if (sound != 0) world.setEnvironmentSoundMaxInterval(sound, v);
        else world.setGroupMaxInterval(group, v);
    }
}

void WorldEditorWindow::handleTextChanged(QWidget* control) { handleEditTextChanged(control); }

void WorldEditorWindow::setIntervalOfTarget(bool maximum, int value) {
    const SoundID sound = getSelectedEnvironmentSoundID();
    if (sound != 0) {
        if (maximum) gCurrentWorld->setEnvironmentSoundMaxInterval(sound, value);
        else gCurrentWorld->setEnvironmentSoundMinInterval(sound, value);
        return;
    }
    const GroupID group = getSelectedEnvironmentGroupID();
    if (maximum) gCurrentWorld->setGroupMaxInterval(group, value);
    else gCurrentWorld->setGroupMinInterval(group, value);
}

void WorldEditorWindow::handleEditTextChanged(QWidget* field) {
    const CommandID signature = codeFromText(field->property("signature").toString());
    const int id = myGetControlID(field);
    if (signature == WET4) {
        if (field == c.nameField) gCurrentWorld->setName(c.nameField->text());
        else if (field == c.authorField) gCurrentWorld->setAuthor(c.authorField->text());
        else if (field == c.descriptionField) gCurrentWorld->setDescription(c.descriptionField->toPlainText());
        updateGetInfoWindow();
        return;
    }
    if (signature != WET1 && signature != WET2) return;
    auto* line = qobject_cast<QLineEdit*>(field);
    if (line == nullptr) return;
    const std::optional<long long> typed = typedInteger(line->text());
    if (!typed || *typed < 0) {
        SysBeep(1);  // the text stays as typed
        return;
    }
    const int n = static_cast<int>(*typed);

    if (signature == WET1 && id == 15) {
        QObject::disconnect(crossfadeSliderHandler);
        c.crossfade->setValue(n);
        setReference(c.crossfade, n);
        crossfadeSliderHandler = attachSliderHandler(c.crossfade);
        gCurrentWorld->setLoopSoundsCrossFadeDuration(n);
    } else if (signature == WET2 && id == 19) {
        QObject::disconnect(minIntervalSliderHandler);
        c.minInterval->setValue(n);
        setReference(c.minInterval, n);
        minIntervalSliderHandler = attachSliderHandler(c.minInterval);
        // The world's pair is in order at once; the maximum's slider and field catch up when the
        // person pauses.
        if (referenceOf(c.maxInterval) < n) {
            maxIntervalTypingTimer->start();
            setIntervalOfTarget(true, n);
        } else {
            setIntervalOfTarget(true, referenceOf(c.maxInterval));
        }
        setIntervalOfTarget(false, n);
    } else if (signature == WET2 && id == 23) {
        QObject::disconnect(maxIntervalSliderHandler);
        c.maxInterval->setValue(n);
        setReference(c.maxInterval, n);
        maxIntervalSliderHandler = attachSliderHandler(c.maxInterval);
        if (referenceOf(c.minInterval) > n) {
            minIntervalTypingTimer->start();
            setIntervalOfTarget(false, n);
        } else {
            setIntervalOfTarget(false, referenceOf(c.minInterval));
        }
        setIntervalOfTarget(true, n);
    }
}

void WorldEditorWindow::updateSlidersAfterTypingTimer(QSlider* slider) {
    if (slider == c.maxInterval && referenceOf(c.minInterval) > referenceOf(c.maxInterval)) {
        QObject::disconnect(maxIntervalSliderHandler);
        setReference(c.maxInterval, referenceOf(c.minInterval));
        c.maxInterval->setValue(referenceOf(c.minInterval));
        syncEditTextWithSlider(c.maxInterval, c.maxIntervalField);
        maxIntervalSliderHandler = attachSliderHandler(c.maxInterval);
    } else if (slider == c.minInterval && referenceOf(c.maxInterval) < referenceOf(c.minInterval)) {
        QObject::disconnect(minIntervalSliderHandler);
        setReference(c.minInterval, referenceOf(c.maxInterval));
        c.minInterval->setValue(referenceOf(c.maxInterval));
        syncEditTextWithSlider(c.minInterval, c.minIntervalField);
        minIntervalSliderHandler = attachSliderHandler(c.minInterval);
    }
}

}  // namespace sylvora::app
