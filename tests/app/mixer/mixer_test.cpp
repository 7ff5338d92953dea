// The mixer turns one sound up or down while the world plays, without the editor: a loop sound's
// volume, an environment sound's range kept in proportion, through the World's setters, so the
// change is heard, marks the world modified in every title and is offered for saving.

#include <QCoreApplication>
#include <QSlider>
#include <initializer_list>
#include <QTreeView>

#include "app/editor/worldeditorwindow.h"
#include "app/info/getinfowindow.h"
#include "app/mixer/mixermodel.h"
#include "app/mixer/mixerwindow.h"
#include "app/shell/applicationevents.h"
#include "app/shell/commanddispatch.h"
#include "app/shell/globals.h"
#include "app/shell/menus.h"
#include "app/support/appfixture.h"
#include "support/worldfixture.h"

using namespace sylvora;
using namespace sylvora::app;
using namespace sylvora::test;

namespace {

class MixerTest : public AppTest {
protected:
    // Open a saved world with one loop, then give it a group of one and a sound of its own.
    void openMixedWorld() {
        ASSERT_EQ(doOpenDocsEvent({makeWorldPackage(QStringLiteral("Glade"))}), noErr);
        loop = gCurrentWorld->getIndLoopSoundID(0);
        gCurrentWorld->setLoopSoundsCrossFadeDuration(0);  // every loop play at its own volume, unfaded
        const GroupID group = gCurrentWorld->addGroup(QStringLiteral("Birds"));
        thrush = gCurrentWorld->addEnvironmentSound(*WorldFixture::aliasOf(maker.writeSound(QStringLiteral("thrush.wav"))));
        owl = gCurrentWorld->addEnvironmentSound(*WorldFixture::aliasOf(maker.writeSound(QStringLiteral("owl.wav"))));
        gCurrentWorld->setEnvironmentSoundGroupID(thrush, group);
        ASSERT_NE(thrush, 0u);
        ASSERT_NE(owl, 0u);
        ASSERT_TRUE(gCurrentWorld->isPlaying());
        dispatchCommand(command::MIXER);
        ASSERT_TRUE(gMixerWindow->isVisible());
    }
    static QStringList rowsUnder(const QModelIndex& parent) {
        QStringList names;
        const MixerModel& model = *gMixerWindow->getModel();
        for (int row = 0; row < model.rowCount(parent); ++row) names << model.index(row, 0, parent).data().toString();
        return names;
    }
    static const MovieEntry* soundingLoop() {
        for (int i = 0; i < gCurrentWorld->getNumMovies(); ++i) {
            const MovieEntry& entry = gCurrentWorld->getMovieEntry(i);
            if (entry.isLoopSound && entry.movie && entry.movie->rate() != 0.0) return &entry;
        }
        return nullptr;
    }

    WorldFixture maker;
    SoundID loop = 0, thrush = 0, owl = 0;
};

}  // namespace

TEST_F(MixerTest, ListsEverySoundUnderItsGroupAndFollowsTheWorld) {
    openMixedWorld();
    const MixerModel& model = *gMixerWindow->getModel();
    EXPECT_EQ(rowsUnder({}), (QStringList{"Loop Sounds", "Environment Sounds"}));
    EXPECT_EQ(rowsUnder(model.index(0, 0)), QStringList{"loop"});
    const QModelIndex environment = model.index(1, 0);
    EXPECT_EQ(rowsUnder(environment), (QStringList{"Birds", "owl"}));
    EXPECT_EQ(rowsUnder(model.index(0, 0, environment)), QStringList{"thrush"});
    for (SoundID id : {loop, thrush, owl}) EXPECT_NE(gMixerWindow->sliderFor(id), nullptr) << id;

    // The loop that plays is marked as sounding.
    ASSERT_TRUE(processEventsUntil([] { return soundingLoop() != nullptr; }));
    gMixerWindow->updateDisplay();
    EXPECT_TRUE(model.indexOfSound(loop).data(MixerModel::SOUNDING_ROLE).toBool());
    EXPECT_FALSE(model.indexOfSound(owl).data(MixerModel::SOUNDING_ROLE).toBool());

    // The editor's changes and another world show up.
    gCurrentWorld->setLoopSoundVolume(loop, 0.25);
    gMixerWindow->updateDisplay();
    EXPECT_EQ(gMixerWindow->sliderFor(loop)->value(), 25);
    gCurrentWorld->removeEnvironmentSound(owl);
    gMixerWindow->updateDisplay();
    EXPECT_FALSE(model.indexOfSound(owl).isValid());

    // A window like the others: its close box hides it.
    gMixerWindow->getWindow()->close();
    EXPECT_FALSE(gMixerWindow->isVisible());
    EXPECT_NE(gMixerWindow->getWindow(), nullptr);
}

TEST_F(MixerTest, SlidersChangeWhatPlaysMarkTheWorldModifiedAndKeepEnvironmentRanges) {
    openMixedWorld();
    gGetInfoWindow->show();
    gWorldEditorWindow->startEditing();
    // Adding sounds already changed the world; saving makes it clean again.
    ASSERT_EQ(gCurrentWorld->doSave(), noErr);
    QCoreApplication::processEvents();  // the world's news reaches the windows on the next turn
    for (MyCarbonWindow* window : std::initializer_list<MyCarbonWindow*>{gGetInfoWindow, gMixerWindow, gWorldEditorWindow}) {
        EXPECT_FALSE(window->getWindow()->isWindowModified());
    }
    EXPECT_EQ(gWorldEditorWindow->getWindow()->windowTitle(), QStringLiteral("Glade — World Editor[*]"));
    ASSERT_TRUE(processEventsUntil([] { return soundingLoop() != nullptr; }));
    loop = gCurrentWorld->getIndLoopSoundID(0);  // saving reloads the world under new identifiers
    thrush = gCurrentWorld->getIndEnvironmentSoundID(0);
    owl = gCurrentWorld->getIndEnvironmentSoundID(1);
    gMixerWindow->updateDisplay();

    gMixerWindow->sliderFor(loop)->setValue(40);
    EXPECT_DOUBLE_EQ(gCurrentWorld->getLoopSoundVolume(loop), 0.4);
    const MovieEntry* playing = soundingLoop();
    ASSERT_NE(playing, nullptr);
    EXPECT_DOUBLE_EQ(playing->volume, 0.4);
    EXPECT_EQ(playing->movie->volume(), static_cast<std::int16_t>(0.4 * 256.0 * gCurrentWorld->getVolume()))
        << "heard at once, not at the next tick";
    EXPECT_TRUE(gCurrentWorld->getModified());
    QCoreApplication::processEvents();
    for (MyCarbonWindow* window : std::initializer_list<MyCarbonWindow*>{gGetInfoWindow, gMixerWindow, gWorldEditorWindow}) {
        EXPECT_TRUE(window->getWindow()->isWindowModified()) << window->getWindow()->objectName().toStdString();
    }
    // Any edit of the world is announced, however it was made: no window has to tell the others.
    gCurrentWorld->setName(QStringLiteral("Meadow"));
    QCoreApplication::processEvents();
    EXPECT_EQ(gWorldEditorWindow->getWindow()->windowTitle(), QStringLiteral("Meadow — World Editor[*]"));
    EXPECT_EQ(gMixerWindow->getWindow()->windowTitle(), QStringLiteral("Meadow — Mixer[*]"));

    struct Case {
        double minimum, maximum;
        int level;
        double expectedMinimum, expectedMaximum;
    };
    for (const Case c : {Case{0.2, 0.8, 40, 0.1, 0.4}, Case{0.0, 0.0, 30, 0.3, 0.3}, Case{0.5, 0.5, 90, 0.9, 0.9},
                         Case{0.0, 0.6, 100, 0.0, 1.0}}) {
        SCOPED_TRACE(c.level);
        gCurrentWorld->setEnvironmentSoundMinVolume(owl, c.minimum);
        gCurrentWorld->setEnvironmentSoundMaxVolume(owl, c.maximum);
        gMixerWindow->updateDisplay();
        gMixerWindow->sliderFor(owl)->setValue(c.level);
        EXPECT_NEAR(gCurrentWorld->getEnvironmentSoundMinVolume(owl), c.expectedMinimum, 1e-12);
        EXPECT_NEAR(gCurrentWorld->getEnvironmentSoundMaxVolume(owl), c.expectedMaximum, 1e-12);
    }
}
