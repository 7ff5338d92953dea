#include <sys/resource.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <cmath>
#include <csignal>

#include "core/package/plist.h"
#include "core/strings/stringresources.h"
#include "packagetestfixture.h"
#include "support/ordinaryuser.h"
#include "support/signalanalysis.h"

namespace sylvora::test {
namespace {

class PackageSave : public PackageTest {
protected:
    // A world made from files outside any package: two groups (the second with an empty name), two
    // loop sounds, two environment sounds (one in the second group) and a picture.
    void buildWorld() {
        world.setName(QStringLiteral("Forest Night"));
        world.setAuthor(QStringLiteral("Ana"));
        world.setLoopSoundsCrossFadeDuration(7);
        world.addGroup(QStringLiteral("Birds"));
        const GroupID quiet = world.addGroup(QStringLiteral(""));
        world.setGroupMinInterval(quiet, 30);
        world.setGroupMaxInterval(quiet, 45);
        const SoundID wind = world.addLoopSound(*aliasOf(writeSound(QStringLiteral("sources/wind.wav"), 0.1, 200)));
        world.setLoopSoundVolume(wind, 0.4);
        world.addLoopSound(*aliasOf(writeSound(QStringLiteral("sources/rain.wav"), 0.1, 300)));
        const SoundID owl = world.addEnvironmentSound(*aliasOf(writeSound(QStringLiteral("sources/owl.wav"), 0.1, 500)));
        world.setEnvironmentSoundGroupID(owl, quiet);
        const SoundID cricket = world.addEnvironmentSound(*aliasOf(writeSound(QStringLiteral("sources/cricket.wav"), 0.1, 700)));
        world.setEnvironmentSoundMinVolume(cricket, 0.25);
        world.setEnvironmentSoundMaxVolume(cricket, 0.75);
        world.setEnvironmentSoundMinInterval(cricket, 5);
        world.setEnvironmentSoundMaxInterval(cricket, 6);
        world.setPictureFileAlias(aliasOf(writePicture(QStringLiteral("sources/cover.png"))).get());
        ASSERT_EQ(world.getNumLoopSounds(), 2);
        ASSERT_EQ(world.getNumEnvironmentSounds(), 2);
    }

    OSStatus saveAs(const QString& name) { return world.doSaveAs(dir.ref(), name); }

    PlistPtr readDescription(const QString& package) {
        QFile file(package + QStringLiteral("/data.plist"));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly));
        return plistParse(file.readAll());
    }


    bool resolvesTo(const Alias& alias, const QString& path) {
        FSRef resolved;
        return FSResolveAlias(alias, resolved) == noErr && FSCompareFSRefs(resolved, ref(path));
    }
};

TEST_F(PackageSave, NewPackageHoldsDescriptionBothFoldersAndPicture) {
    ASSERT_EQ(saveAs(QStringLiteral("Empty.sylvora")), noErr);
    const QString empty = dir.filePath(QStringLiteral("Empty.sylvora"));
    EXPECT_EQ(folderEntries(empty), (QStringList{QStringLiteral("Environment Sounds"), QStringLiteral("Loop Sounds"),
                                             QStringLiteral("data.plist")}));
    EXPECT_TRUE(folderEntries(empty + QStringLiteral("/Loop Sounds")).isEmpty());
    ASSERT_NE(world.getPackageAlias(), nullptr);
    EXPECT_TRUE(resolvesTo(*world.getPackageAlias(), empty));
    EXPECT_FALSE(world.getModified());

    world.setPictureFileAlias(aliasOf(writePicture(QStringLiteral("sources/cover.png"))).get());
    ASSERT_EQ(saveAs(QStringLiteral("Rain.sylvora")), noErr);
    const QString rain = dir.filePath(QStringLiteral("Rain.sylvora"));
    EXPECT_TRUE(folderEntries(rain).contains(QStringLiteral("cover.png")));
    EXPECT_EQ(snapshotTree(rain).value(QStringLiteral("cover.png")),
              snapshotTree(dir.filePath(QStringLiteral("sources"))).value(QStringLiteral("cover.png")));
    EXPECT_TRUE(resolvesTo(*world.getPackageAlias(), rain));
    EXPECT_TRUE(prefs->isAKnownWorld(ref(rain)));
    EXPECT_TRUE(tempPackagesIn(dir.path()).isEmpty());
}

TEST_F(PackageSave, DescriptionIsWrittenWithItsTypesAndTheWorldReloads) {
    buildWorld();
    world.start();
    ASSERT_EQ(saveAs(QStringLiteral("Forest.sylvora")), noErr);
    const QString package = dir.filePath(QStringLiteral("Forest.sylvora"));

    const PlistPtr rootOwner = readDescription(package);
    const auto root = static_cast<plist_t>(rootOwner.get());
    ASSERT_TRUE(plistIsDict(root));
    EXPECT_EQ(plistGetString(root, World::NAME_KEY), QStringLiteral("Forest Night"));
    EXPECT_FALSE(plistGetString(root, World::DESCRIPTION_KEY));  // empty: not written
    EXPECT_EQ(plist_get_node_type(plist_dict_get_item(root, World::LOOP_SOUNDS_CROSSFADE_DURATION_KEY)), PLIST_UINT);
    EXPECT_EQ(plistGetString(root, World::PICTURE_FILENAME_KEY), QStringLiteral("cover.png"));

    const plist_t groups = plistGetArray(root, World::GROUPS_ARRAY_KEY);
    ASSERT_EQ(plistArraySize(groups), 2u);
    EXPECT_EQ(plistGetString(plistArrayItem(groups, 1), World::GROUP_NAME_KEY), QStringLiteral(""));
    EXPECT_EQ(plistGetInt32(plistArrayItem(groups, 1), World::ENVIRONMENT_SOUND_MAX_INTERVAL_KEY), 45);

    const plist_t loops = plistGetArray(root, World::LOOP_SOUNDS_ARRAY_KEY);
    ASSERT_EQ(plistArraySize(loops), 2u);
    EXPECT_EQ(plistGetString(plistArrayItem(loops, 0), World::SOUND_FILENAME_KEY), QStringLiteral("wind.wav"));
    EXPECT_EQ(plist_get_node_type(plist_dict_get_item(plistArrayItem(loops, 0), World::LOOP_SOUND_VOLUME_KEY)), PLIST_REAL);
    EXPECT_EQ(plistGetDouble(plistArrayItem(loops, 0), World::LOOP_SOUND_VOLUME_KEY), 0.4);

    const plist_t sounds = plistGetArray(root, World::ENVIRONMENT_SOUNDS_ARRAY_KEY);
    ASSERT_EQ(plistArraySize(sounds), 2u);
    EXPECT_EQ(plistGetInt32(plistArrayItem(sounds, 0), World::ENVIRONMENT_SOUND_GROUP_INDEX_KEY), 1);
    EXPECT_EQ(plistGetInt32(plistArrayItem(sounds, 1), World::ENVIRONMENT_SOUND_GROUP_INDEX_KEY), -1);
    EXPECT_EQ(plist_get_node_type(plist_dict_get_item(plistArrayItem(sounds, 1), World::ENVIRONMENT_SOUND_MIN_INTERVAL_KEY)),
              PLIST_UINT);
    EXPECT_EQ(plistGetDouble(plistArrayItem(sounds, 1), World::ENVIRONMENT_SOUND_MIN_VOLUME_KEY), 0.25);
    EXPECT_FALSE(plistGetDouble(plistArrayItem(sounds, 1), World::ENVIRONMENT_SOUND_OLD_VOLUME_ADJUST_KEY));

    // The sound copies are the sources byte for byte.
    const auto sources = snapshotTree(dir.filePath(QStringLiteral("sources")));
    const auto saved = snapshotTree(package);
    EXPECT_EQ(saved.value(QStringLiteral("Loop Sounds/rain.wav")), sources.value(QStringLiteral("rain.wav")));
    EXPECT_EQ(saved.value(QStringLiteral("Environment Sounds/owl.wav")), sources.value(QStringLiteral("owl.wav")));

    // The world now lives in the package, still playing, with everything it had.
    EXPECT_TRUE(world.isPlaying());
    EXPECT_FALSE(world.getModified());
    EXPECT_TRUE(resolvesTo(*world.getLoopSound(world.getIndLoopSoundID(0)), package + QStringLiteral("/Loop Sounds/wind.wav")));
    EXPECT_EQ(world.getLoopSoundVolume(world.getIndLoopSoundID(0)), 0.4);
    EXPECT_EQ(world.getLoopSoundsCrossFadeDuration(), 7);
    EXPECT_EQ(world.getEnvironmentSoundGroupID(world.getIndEnvironmentSoundID(0)), world.getIndGroupID(1));
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(world.getIndEnvironmentSoundID(1)), 6);
    EXPECT_TRUE(world.getGroupName(world.getIndGroupID(1)).isEmpty());
}

TEST_F(PackageSave, WorldWithoutMetadataWritesNoMetadataKeys) {
    world.setName(QStringLiteral(""));
    ASSERT_EQ(saveAs(QStringLiteral("Bare.sylvora")), noErr);
    const PlistPtr rootOwner = readDescription(dir.filePath(QStringLiteral("Bare.sylvora")));
    const auto root = static_cast<plist_t>(rootOwner.get());
    for (const char* key : {World::NAME_KEY, World::AUTHOR_KEY, World::DESCRIPTION_KEY, World::PICTURE_FILENAME_KEY})
        EXPECT_EQ(plist_dict_get_item(root, key), nullptr) << key;
    EXPECT_EQ(plistArraySize(plistGetArray(root, World::GROUPS_ARRAY_KEY)), 0u);
    EXPECT_NE(plistGetArray(root, World::LOOP_SOUNDS_ARRAY_KEY), nullptr);
    EXPECT_NE(plistGetArray(root, World::ENVIRONMENT_SOUNDS_ARRAY_KEY), nullptr);
}

TEST_F(PackageSave, SavingOverAPlainFileReplacesItWithThePackage) {
    buildWorld();
    dir.writeFile(QStringLiteral("Forest.sylvora"), QByteArray("an old note"));
    ASSERT_EQ(saveAs(QStringLiteral("Forest.sylvora")), noErr);
    const QString package = dir.filePath(QStringLiteral("Forest.sylvora"));
    EXPECT_TRUE(QFileInfo(package).isDir());
    EXPECT_TRUE(QFileInfo::exists(package + QStringLiteral("/Loop Sounds/wind.wav")));
    EXPECT_TRUE(resolvesTo(*world.getPackageAlias(), package));
    EXPECT_EQ(folderEntries(dir.path()), (QStringList{QStringLiteral("Forest.sylvora"), QStringLiteral("sources")}));
}

TEST_F(PackageSave, SavingOverTheLoadedPackageKeepsItsIdentity) {
    buildWorld();
    ASSERT_EQ(saveAs(QStringLiteral("Forest.sylvora")), noErr);
    const QString package = dir.filePath(QStringLiteral("Forest.sylvora"));
    const QString owl = package + QStringLiteral("/Environment Sounds/owl.wav");
    const quint64 owlInode = inodeOf(owl);
    const AliasHandle aliasBefore = aliasOf(package);

    for (const bool playing : {true, false}) {
        SCOPED_TRACE(playing ? "playing" : "stopped");
        if (playing) world.start(); else world.stop();
        world.removeLoopSound(world.getIndLoopSoundID(0));
        world.setName(playing ? QStringLiteral("Night 1") : QStringLiteral("Night 2"));
        ASSERT_TRUE(world.getModified());
        ASSERT_GT(world.getNumMovies(), 0);

        ASSERT_EQ(world.doSave(), noErr);
        EXPECT_EQ(folderEntries(dir.path()), (QStringList{QStringLiteral("Forest.sylvora"), QStringLiteral("sources")}));
        EXPECT_EQ(inodeOf(owl), owlInode) << "an unchanged sound is linked into the new package, not copied";
        EXPECT_TRUE(resolvesTo(*aliasBefore, package));
        EXPECT_EQ(world.isPlaying(), playing);
        EXPECT_FALSE(world.getModified());
        EXPECT_GE(world.getNumMovies(), world.getNumLoopSounds() + world.getNumEnvironmentSounds());
        EXPECT_EQ(world.getNumLoopSounds(), playing ? 1 : 0);
        EXPECT_TRUE(resolvesTo(*world.getPackageAlias(), package));
    }
    EXPECT_EQ(folderEntries(package + QStringLiteral("/Loop Sounds")), QStringList{});
    EXPECT_EQ(world.getName(), QStringLiteral("Night 2"));
    EXPECT_EQ(prefs->getNumKnownWorlds(), 1);
}

// Saving over the playing world's own package is heard as a short crossfade into the reloaded
// world: no sample leaves the tone's course as a cut or a declick would, and the tone is never
// silent for longer than the fade. The save comes between two ticks, as a person's does.
TEST_F(PackageSave, SavingAPlayingWorldNeitherClicksNorFallsSilent) {
    constexpr double FREQUENCY = 441.0;  // whole cycles in one second at the fixture's rate
    constexpr double AMPLITUDE = 0.3;
    world.addLoopSound(*aliasOf(writeSound(QStringLiteral("sources/tone.wav"), 1.0, FREQUENCY, AMPLITUDE)));
    world.setLoopSoundsCrossFadeDuration(0);
    ASSERT_EQ(saveAs(QStringLiteral("Tone.sylvora")), noErr);
    world.start();
    Recording heard;
    const auto record = [&heard](const float* samples, std::size_t frames, std::uint64_t) { heard.append(samples, frames); };
    renderer.renderSeconds(1.41, record);
    world.setName(QStringLiteral("Tone"));
    ASSERT_EQ(world.doSave(), noErr);
    ASSERT_TRUE(world.isPlaying());
    renderer.renderSeconds(1.0, record);

    // x[n] - 2cos(w)x[n-1] + x[n-2] is zero on a steady sine; a fade leaves a trace in proportion
    // to its slope, a cut or a 5-ms declick one many times larger. (The world's own first start,
    // from silence, is left out.)
    const std::vector<float>& x = heard.left();
    const double twoCos = 2.0 * std::cos(2.0 * M_PI * FREQUENCY / sampleRate);
    double worstStep = 0.0;
    for (auto n = static_cast<std::size_t>(sampleRate / 10); n < x.size(); ++n)
        worstStep = std::max(worstStep, std::fabs(x[n] - twoCos * x[n - 1] + x[n - 2]));
    EXPECT_LT(worstStep, 0.002 * AMPLITUDE);

    const auto period = static_cast<std::size_t>(sampleRate / FREQUENCY);
    std::size_t silentPeriods = 0;
    std::size_t longestSilence = 0;
    for (std::size_t first = 0; first + period <= x.size(); first += period) {
        const bool silent = std::all_of(x.begin() + static_cast<std::ptrdiff_t>(first),
                                        x.begin() + static_cast<std::ptrdiff_t>(first + period),
                                        [](float v) { return std::fabs(v) < 0.05 * AMPLITUDE; });
        silentPeriods = silent ? silentPeriods + 1 : 0;
        longestSilence = std::max(longestSilence, silentPeriods);
    }
    EXPECT_LE(static_cast<double>(longestSilence * period) / sampleRate, World::RELOAD_FADE_SECONDS);
}

// A file manager renames the open world's package and moves it into another folder while it plays:
// the world follows it, and saving writes to the package where it is now.
TEST_F(PackageSave, OpenPackageRenamedAndMovedIsSavedWhereItIsNow) {
    buildWorld();
    ASSERT_EQ(saveAs(QStringLiteral("Forest.sylvora")), noErr);
    world.start();
    const QString moved = dir.makeDir(QStringLiteral("Archive")) + QStringLiteral("/Old Woods.sylvora");
    ASSERT_EQ(::rename(QFile::encodeName(dir.filePath(QStringLiteral("Forest.sylvora"))).constData(),
                       QFile::encodeName(moved).constData()),
              0);

    world.setName(QStringLiteral("Renamed Night"));
    ASSERT_EQ(world.doSave(), noErr);
    EXPECT_EQ(folderEntries(dir.path()), (QStringList{QStringLiteral("Archive"), QStringLiteral("sources")}));
    EXPECT_EQ(folderEntries(dir.filePath(QStringLiteral("Archive"))), QStringList{QStringLiteral("Old Woods.sylvora")});
    const PlistPtr saved = readDescription(moved);
    EXPECT_EQ(plistGetString(static_cast<plist_t>(saved.get()), World::NAME_KEY), QStringLiteral("Renamed Night"));
    EXPECT_EQ(folderEntries(moved + QStringLiteral("/Loop Sounds")).size(), 2);
    EXPECT_TRUE(resolvesTo(*world.getPackageAlias(), moved));
    EXPECT_TRUE(world.isPlaying());
    EXPECT_EQ(world.getNumLoopSounds(), 2);
    EXPECT_FALSE(world.getPicture().isNull());
    EXPECT_EQ(world.copyDefaultSaveAsFilename(true), QStringLiteral("Old Woods.sylvora"));
}

TEST_F(PackageSave, SaveAsOverTheLoadedPackageReleasesAnOpenPictureFirst) {
    world.setPictureFileAlias(aliasOf(writePicture(QStringLiteral("sources/cover.png"))).get());
    ASSERT_EQ(saveAs(QStringLiteral("Picture.sylvora")), noErr);
    const QString package = dir.filePath(QStringLiteral("Picture.sylvora"));
    const quint64 inode = inodeOf(package + QStringLiteral("/cover.png"));
    ASSERT_EQ(world.getNumMovies(), 0);
    world.setAuthor(QStringLiteral("Ben"));

    ASSERT_EQ(saveAs(QStringLiteral("Picture.sylvora")), noErr);
    EXPECT_EQ(inodeOf(package + QStringLiteral("/cover.png")), inode);
    EXPECT_TRUE(tempPackagesIn(dir.path()).isEmpty());
    EXPECT_TRUE(QFileInfo::exists(package + QStringLiteral("/cover.png")));
    ASSERT_NE(world.getPictureFileAlias(), nullptr);
    EXPECT_FALSE(world.getPicture().isNull());
    EXPECT_EQ(world.getAuthor(), QStringLiteral("Ben"));
}

// What an interrupted save left beside a package: removed when the package is whole, put in its
// place when the package is broken or gone and the leftover is whole, kept when neither is whole.
TEST_F(PackageSave, OpeningTidiesOrRestoresWhatAnInterruptedSaveLeft) {
    buildWorld();
    ASSERT_EQ(saveAs(QStringLiteral("Forest.sylvora")), noErr);
    const QString package = dir.filePath(QStringLiteral("Forest.sylvora"));
    const QString leftover = dir.filePath(World::copyTempPackageName(QStringLiteral("Forest.sylvora")));
    const auto whole = snapshotTree(package);
    struct Case {
        const char* what;
        bool packageWhole, leftoverWhole;
        OSStatus loaded;
        bool leftoverStays;
    };
    for (const Case& c : {Case{"both whole", true, true, noErr, false}, Case{"an unfinished leftover", true, false, noErr, false},
                          Case{"a broken package", false, true, noErr, false},
                          Case{"neither whole", false, false, fnfErr, true}}) {
        SCOPED_TRACE(c.what);
        QDir(leftover).removeRecursively();
        ASSERT_EQ(::system(qPrintable(QStringLiteral("cp -a '%1' '%2'").arg(package, leftover))), 0);
        if (!c.leftoverWhole) QFile::remove(leftover + QStringLiteral("/data.plist"));
        if (!c.packageWhole) QFile::remove(package + QStringLiteral("/data.plist"));
        world.resetToInitialState();
        EXPECT_EQ(load(package), c.loaded);
        EXPECT_EQ(QFileInfo::exists(leftover), c.leftoverStays);
        if (c.loaded == noErr) {
            EXPECT_EQ(snapshotTree(package), whole);
        }
    }
}

TEST_F(PackageSave, SaveWithoutAPackageAsksForAName) {
    buildWorld();
    EXPECT_EQ(world.doSave(), fnfErr);
    EXPECT_TRUE(world.getModified());
    EXPECT_EQ(folderEntries(dir.path()), (QStringList{QStringLiteral("sources")}));
}

TEST_F(PackageSave, FailingSaveLeavesTheExistingPackageUntouched) {
    buildWorld();
    ASSERT_EQ(saveAs(QStringLiteral("Forest.sylvora")), noErr);
    const QString package = dir.filePath(QStringLiteral("Forest.sylvora"));
    const auto before = snapshotTree(package);

    const QString vanishing = writeSound(QStringLiteral("sources/gone.wav"));
    ASSERT_NE(world.addEnvironmentSound(*aliasOf(vanishing)), 0u);
    ASSERT_TRUE(QFile::remove(vanishing));

    world.start();
    EXPECT_EQ(saveAs(QStringLiteral("Forest.sylvora")), fnfErr);  // through doSave: sounds are loaded
    EXPECT_EQ(snapshotTree(package), before);
    EXPECT_TRUE(tempPackagesIn(dir.path()).isEmpty());
    EXPECT_TRUE(world.getModified());
    EXPECT_TRUE(world.isPlaying()) << "a failed save never stops the world";

    EXPECT_EQ(saveAs(QStringLiteral("Copy.sylvora")), fnfErr);
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("Copy.sylvora"))));
    EXPECT_TRUE(tempPackagesIn(dir.path()).isEmpty());
}

TEST_F(PackageSave, NamesThatCollideInsideThePackageFailWithDuplicateName) {
    world.addLoopSound(*aliasOf(writeSound(QStringLiteral("one/a.wav"), 0.1, 200)));
    world.addLoopSound(*aliasOf(writeSound(QStringLiteral("two/a.wav"), 0.1, 300)));
    ASSERT_EQ(world.getNumLoopSounds(), 2);
    EXPECT_EQ(saveAs(QStringLiteral("Dup.sylvora")), dupFNErr);
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("Dup.sylvora"))));

    world.clearLoopSoundList();
    for (const QString& name : {QStringLiteral("data.plist"), QStringLiteral("Loop Sounds")}) {
        SCOPED_TRACE(name.toStdString());
        const QString picture = writePicture(QStringLiteral("pictures/cover.png"));
        const QString renamed = dir.filePath(QStringLiteral("pictures/") + name);
        QFile::remove(renamed);
        ASSERT_TRUE(QFile::rename(picture, renamed));
        world.setPictureFileAlias(aliasOf(renamed).get());
        ASSERT_NE(world.getPictureFileAlias(), nullptr);
        EXPECT_EQ(saveAs(QStringLiteral("Dup.sylvora")), dupFNErr);
        EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("Dup.sylvora"))));
    }
    EXPECT_TRUE(tempPackagesIn(dir.path()).isEmpty());
}

TEST_F(PackageSave, UnusableNamesAndFoldersAreRefused) {
    buildWorld();
    EXPECT_EQ(saveAs(QStringLiteral("a/b.sylvora")), paramErr);
    EXPECT_EQ(saveAs(QStringLiteral("..")), paramErr);
    EXPECT_EQ(saveAs(QString()), paramErr);
    EXPECT_EQ(world.doSaveAs(ref(dir.filePath(QStringLiteral("sources/wind.wav"))), QStringLiteral("X.sylvora")), dirNFErr);
    EXPECT_TRUE(world.getModified());
}

TEST_F(PackageSave, ReadOnlyFolderRefusesTheSave) {
    buildWorld();
    const QString folder = dir.makeDir(QStringLiteral("locked"));
    ASSERT_TRUE(QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner));
    test::runAsOrdinaryUser(dir, [&]() -> std::string {
        if (world.doSaveAs(ref(folder), QStringLiteral("Forest.sylvora")) != permErr) return "the save was not refused";
        if (!world.getModified()) return "the world was marked saved";
        return {};
    });
    QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    EXPECT_TRUE(folderEntries(folder).isEmpty());
}

// A file-size limit makes writes past it fail as a full disk would, for root as well.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        previousHandler_ = std::signal(SIGXFSZ, SIG_IGN);
        ::getrlimit(RLIMIT_FSIZE, &previous_);
        rlimit limit = previous_;
        limit.rlim_cur = bytes;
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        ::setrlimit(RLIMIT_FSIZE, &previous_);
        std::signal(SIGXFSZ, previousHandler_);
    }

private:
    rlimit previous_{};
    void (*previousHandler_)(int) = nullptr;
};

TEST_F(PackageSave, FullDiskRemovesThePartialPackage) {
    buildWorld();
    ASSERT_EQ(saveAs(QStringLiteral("Forest.sylvora")), noErr);
    const QString package = dir.filePath(QStringLiteral("Forest.sylvora"));
    const auto before = snapshotTree(package);
    ASSERT_NE(world.addLoopSound(*aliasOf(writeSound(QStringLiteral("sources/long.wav"), 3.0))), 0u);

    OSStatus overExisting = noErr;
    OSStatus newPackage = noErr;
    {
        const FileSizeLimit limit(64 * 1024);
        overExisting = saveAs(QStringLiteral("Forest.sylvora"));
        newPackage = saveAs(QStringLiteral("Fresh.sylvora"));
    }
    EXPECT_NE(overExisting, noErr);
    EXPECT_NE(newPackage, noErr);
    EXPECT_EQ(snapshotTree(package), before);
    EXPECT_FALSE(QFileInfo::exists(dir.filePath(QStringLiteral("Fresh.sylvora"))));
    EXPECT_TRUE(tempPackagesIn(dir.path()).isEmpty());
}

TEST_F(PackageSave, DefaultSaveAsFilenameFollowsPackageNameAndWorldName) {
    const QString untitled = copyLocalizedString(UNTITLED_SAVE_AS_FILENAME_KEY, MISC_STRINGS_FILE);
    EXPECT_EQ(world.copyDefaultSaveAsFilename(true), untitled + QStringLiteral(".sylvora"));
    EXPECT_EQ(world.copyDefaultSaveAsFilename(false), untitled);

    world.setName(QStringLiteral("Forest Night"));
    EXPECT_EQ(world.copyDefaultSaveAsFilename(true), QStringLiteral("Forest Night.sylvora"));
    EXPECT_EQ(world.copyDefaultSaveAsFilename(false), QStringLiteral("Forest Night"));

    ASSERT_EQ(saveAs(QStringLiteral("Rain.sylvora")), noErr);
    EXPECT_EQ(world.copyDefaultSaveAsFilename(true), QStringLiteral("Rain.sylvora"));
    EXPECT_EQ(world.copyDefaultSaveAsFilename(false), QStringLiteral("Rain"));

    // A package that is gone no longer names the world.
    ASSERT_TRUE(QDir(dir.filePath(QStringLiteral("Rain.sylvora"))).removeRecursively());
    EXPECT_EQ(world.copyDefaultSaveAsFilename(true), QStringLiteral("Forest Night.sylvora"));
}

}  // namespace
}  // namespace sylvora::test
