#pragma once

// The one world: its model (name, author, description, picture, loop sounds, environment sounds
// and their groups), its packages on disk, and its playback state (the pool of sound instances and
// the scheduler that drives them). The application has exactly one World for its whole run; opening
// another world resets and refills it.
//
// Every member runs on the main thread: event handlers and the playback timer, which never overlap.
// Nothing here is locked. The sound instances it owns talk to the audio thread themselves.
//
// Split by concern over world_model.cpp (fields, tables, setters), world_picture.cpp,
// world_pool.cpp (the sound instance pool), world_scheduler.cpp (start, stop, the timer tick),
// world_editing.cpp (adding, removing and regrouping while playing), world_package_load.cpp and
// world_package_save.cpp.

#include <QImage>
#include <QString>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "core/files/alias.h"
#include "core/time/eventloop.h"
#include "core/world/modifiedflag.h"
#include "util/status.h"

namespace sylvora {

namespace audio {
class Engine;
class SoundInstance;
}  // namespace audio

class FileWatcher;

// Identifiers come from one counter per World shared by groups, loop sounds and environment
// sounds, so an identifier alone names one thing. 0 means none or failure.
using SoundID = std::uint32_t;
using GroupID = std::uint32_t;

struct LoopSound {
    AliasHandle alias;
    QString filename;  // cached on first request; null until then
    double volume = 1.0;
    SoundID id = 0;
    // A play of it failed because its file could not be read: it is left out of the rotation
    // until `unreadableFile` (where the file was found, or was last) changes.
    bool unreadable = false;
    QString unreadableFile;
};

// The five fields that are always copied and moved as one unit.
struct EnvironmentSoundSettings {
    std::int32_t minInterval = 20;
    std::int32_t maxInterval = 40;
    double minVolume = 1.0;
    double maxVolume = 1.0;
    GroupID groupID = 0;
};

struct EnvironmentSound {
    AliasHandle alias;
    QString filename;
    EnvironmentSoundSettings settings;
    SoundID id = 0;
};

struct EnvironmentSoundGroup {
    QString name;
    std::int32_t minInterval = 20;
    std::int32_t maxInterval = 40;
    GroupID id = 0;
};

// One loaded sound instance of the pool with its scheduling state.
struct MovieEntry {
    bool isLoopSound = false;
    bool skipFadeIn = false;  // a first loop instance that starts at full volume
    SoundID soundID = 0;
    std::unique_ptr<audio::SoundInstance> movie;
    double volume = 1.0;      // this play's volume, 0..1
    double duration = 0.0;    // seconds
    double startTime = -1.0;  // event-clock seconds; > 0 means scheduled
};

// The gain at a point of a crossfade; `fraction` is the part of the crossfade that has passed.
double equalPowerCrossfade(double fraction, bool fadeIn);
// A time of an instance's own (its position, its duration) in seconds.
double secondsOf(const audio::SoundInstance& movie, std::int64_t time);

class World {
public:
    static constexpr int MAX_GROUPS = 50;
    static constexpr int MAX_LOOP_SOUNDS = 50;
    static constexpr int MAX_ENVIRONMENT_SOUNDS = 50;
    static constexpr int MAX_MOVIES = 100;
    static constexpr std::int32_t DEFAULT_LOOP_SOUNDS_CROSS_FADE_DURATION = 5;
    static constexpr double MOVIES_TASK_TIMER_INTERVAL = 1.0 / 15.0;
    // What sounded before a save's reload fades out over this while the reloaded world fades in:
    // long enough to be no click, short enough to be heard as one unbroken sound.
    static constexpr double RELOAD_FADE_SECONDS = 0.04;

    // Package format.
    static constexpr const char* PACKAGENAME_EXTENSION = "sylvora";
    static constexpr const char* DATA_FILE_NAME = "data.plist";
    static constexpr const char* LOOP_SOUNDS_SUBDIRECTORY_NAME = "Loop Sounds";
    static constexpr const char* ENVIRONMENT_SOUNDS_SUBDIRECTORY_NAME = "Environment Sounds";
    static constexpr const char* NAME_KEY = "Name";
    static constexpr const char* AUTHOR_KEY = "Author";
    static constexpr const char* DESCRIPTION_KEY = "Description";
    static constexpr const char* GROUPS_ARRAY_KEY = "Environment Sound Groups";
    static constexpr const char* LOOP_SOUNDS_CROSSFADE_DURATION_KEY = "Loop Sounds Crossfade Duration";
    static constexpr const char* PICTURE_FILENAME_KEY = "Picture File Name";
    static constexpr const char* LOOP_SOUNDS_ARRAY_KEY = "Loop Sounds";
    static constexpr const char* ENVIRONMENT_SOUNDS_ARRAY_KEY = "Environment Sounds";
    static constexpr const char* GROUP_NAME_KEY = "Group Name";
    static constexpr const char* ENVIRONMENT_SOUND_MIN_INTERVAL_KEY = "Minimum Interval";
    static constexpr const char* ENVIRONMENT_SOUND_MAX_INTERVAL_KEY = "Maximum Interval";
    static constexpr const char* SOUND_FILENAME_KEY = "File Name";
    static constexpr const char* LOOP_SOUND_VOLUME_KEY = "Volume";
    static constexpr const char* ENVIRONMENT_SOUND_MIN_VOLUME_KEY = "Minimum Volume";
    static constexpr const char* ENVIRONMENT_SOUND_MAX_VOLUME_KEY = "Maximum Volume";
    static constexpr const char* ENVIRONMENT_SOUND_GROUP_INDEX_KEY = "Group Index";
    static constexpr const char* ENVIRONMENT_SOUND_OLD_VOLUME_ADJUST_KEY = "Volume Adjust";
    static constexpr const char* TEMP_PREFIX = "temp ";

    // Seeds random() once, from `seed` when given (renders, tests) or else from the tick count.
    World(audio::Engine& engine, EventLoop& eventLoop, std::optional<unsigned> seed = std::nullopt);
    ~World();
    World(const World&) = delete;
    World& operator=(const World&) = delete;

    void resetToInitialState();

    // Metadata.
    QString getName() const { return name; }
    QString getAuthor() const { return author; }
    QString getDescription() const { return description; }
    void setName(const QString& value);
    void setAuthor(const QString& value);
    void setDescription(const QString& value);
    bool getModified() const { return modified; }
    const Alias* getPackageAlias() const { return packageAlias.get(); }
    double getVolume() const { return volume; }
    void setVolume(double value);
    std::int32_t getLoopSoundsCrossFadeDuration() const { return loopSoundsCrossFadeDuration; }
    void setLoopSoundsCrossFadeDuration(long seconds);

    // Loop sounds.
    int getNumLoopSounds() const { return numLoopSounds; }
    SoundID getIndLoopSoundID(int index) const;
    int getLoopSoundIndex(SoundID id) const;
    const Alias* getLoopSound(SoundID id) const;
    QString getLoopSoundFilename(SoundID id);
    double getLoopSoundVolume(SoundID id) const;
    void setLoopSoundVolume(SoundID id, double value);
    void clearLoopSoundList();
    SoundID addLoopSound(const Alias& alias);
    void removeLoopSound(SoundID id);

    // Environment sounds.
    int getNumEnvironmentSounds() const { return numEnvironmentSounds; }
    SoundID getIndEnvironmentSoundID(int index) const;
    int getEnvironmentSoundIndex(SoundID id) const;
    const Alias* getEnvironmentSound(SoundID id) const;
    QString getEnvironmentSoundFilename(SoundID id);
    SoundID getEnvironmentSoundIDWithAlias(const Alias& alias) const;
    GroupID getEnvironmentSoundGroupID(SoundID id) const;
    double getEnvironmentSoundMinVolume(SoundID id) const;
    double getEnvironmentSoundMaxVolume(SoundID id) const;
    void setEnvironmentSoundMinVolume(SoundID id, double value);
    void setEnvironmentSoundMaxVolume(SoundID id, double value);
    std::int32_t getEnvironmentSoundMinInterval(SoundID id) const;
    std::int32_t getEnvironmentSoundMaxInterval(SoundID id) const;
    void setEnvironmentSoundMinInterval(SoundID id, int value);
    void setEnvironmentSoundMaxInterval(SoundID id, int value);
    void removeEnvironmentSoundsWithGroupID(GroupID groupID);
    void clearEnvironmentSoundList();
    SoundID addEnvironmentSound(const Alias& alias);
    void removeEnvironmentSound(SoundID id);
    void setEnvironmentSoundGroupID(SoundID id, GroupID groupID);
    SoundID getRandomEnvironmentSoundInGroup(GroupID groupID);

    // Groups.
    int getNumGroups() const { return numGroups; }
    GroupID getIndGroupID(int index) const;
    int getGroupIndex(GroupID id) const;
    GroupID addGroup(const QString& name);  // a null name gives the numbered default name
    void removeGroup(GroupID id);
    QString getGroupName(GroupID id) const;
    void setGroupName(GroupID id, const QString& value);
    std::int32_t getGroupMinInterval(GroupID id) const;
    std::int32_t getGroupMaxInterval(GroupID id) const;
    void setGroupMinInterval(GroupID id, int value);
    void setGroupMaxInterval(GroupID id, int value);
    void clearGroupList();

    // Picture.
    const Alias* getPictureFileAlias() const { return pictureFileAlias.get(); }
    void setPictureFileAlias(const Alias* alias);
    QImage getPicture();
    QString copyPictureDisplayFilename() const;

    // Packages.
    OSStatus loadFromPackage(const FSRef& package);
    OSStatus savePackageContents(const FSRef& package);
    OSStatus saveToTempUniqueNamePackage(const FSRef& parent, FSRef& out);
    OSStatus doSaveAs(const FSRef& parent, const QString& name);
    OSStatus doSave();
    QString copyDefaultSaveAsFilename(bool withExtension) const;
    // Where the last save left the previous version of the world, when it could not be sure the new
    // one had reached the disk and so kept the old; empty otherwise.
    const QString& getKeptPreviousVersion() const { return keptPreviousVersion; }
    // The file name of the sound or picture whose file the last save could not find; empty when
    // every file was there.
    const QString& getMissingFileOfLastSave() const { return missingFileOfLastSave; }
    // What an interrupted save of the package `packageName` in `parent` left beside it: removed while
    // the package is whole, or put in its place when the package is not and the leftover is.
    static void recoverInterruptedSave(const FSRef& parent, const QString& packageName);
    // The temporary package of a save over `packageName`: "temp <n>.sylvora" with n drawn from the
    // name, the same at every save and in every run, so that a leftover is found again.
    static QString copyTempPackageName(const QString& packageName);

    // Playback.
    void start();
    void stop();
    bool isPlaying() const { return moviesTaskTimerRef != nullptr; }
    static void moviesTaskTimer(EventLoopTimerRef timer, void* world);
    static constexpr auto MOVIES_TASK_TIMER_UPP = &World::moviesTaskTimer;
    OSStatus loadSoundFileIntoMovieList(bool isLoopSound, SoundID soundID);
    int getUnscheduledMovie(bool isLoopSound, SoundID soundID);
    int removeAllMoviesWithID(SoundID soundID);
    void validateScheduling() const;

    // The loop sounds left out of the rotation because their files could not be read, by file name.
    QStringList getUnreadableLoopSounds();
    // [main] Called after each tick of the playback timer: a display that follows the world can
    // ride on it instead of waking the process on a timer of its own. The timer runs only when a
    // tick has something to do, so the listener answers with the event-clock time by which it
    // wants the next one (0: none of its own).
    void setTickListener(std::function<double()> listener) { tickListener = std::move(listener); }
    // [main] Called, from the world's timer or its watch on broken files, whenever a loop sound is
    // left out or comes back.
    void setUnreadableLoopSoundsListener(std::function<void()> listener) { unreadableListener = std::move(listener); }
    // [main] Called after every edit of what a save writes, and when a load or a save clears the
    // modified mark, often in the middle of the operation: windows showing the world's name and
    // unsaved state follow the editor without polling, and must only read the world when told.
    void setChangeListener(std::function<void()> listener) { modified.setListener(std::move(listener)); }

    // Read-only view of the pool, for status displays and tests.
    int getNumMovies() const { return numMovies; }
    const MovieEntry& getMovieEntry(int index) const { return movies[static_cast<std::size_t>(index)]; }

    // The editor's sound preview is stopped before a save releases the package's files; the app
    // installs the editor's stop here.
    void setPreviewStopper(std::function<void()> stopper) { previewStopper = std::move(stopper); }

    // Asked before each file a save copies; a true answer ends the save with userCanceledErr, the
    // temporary package deleted. sylvora-cli stops a save this way on Ctrl+C.
    void setSaveCanceller(std::function<bool()> canceller) { saveCanceller = std::move(canceller); }

    audio::Engine& getEngine() const { return engine; }
    EventLoop& getEventLoop() const { return eventLoop; }

private:
    // Model fields.
    double volume = 1.0;
    ModifiedFlag modified;
    AliasHandle packageAlias;
    QString name;
    QString author;
    QString description;
    std::uint32_t nextID = 1;
    std::int32_t loopSoundsCrossFadeDuration = DEFAULT_LOOP_SOUNDS_CROSS_FADE_DURATION;
    std::array<EnvironmentSoundGroup, MAX_GROUPS> groups;
    std::int32_t numGroupsCreated = 0;
    std::int32_t numGroups = 0;
    std::array<LoopSound, MAX_LOOP_SOUNDS> loopSounds;
    std::int32_t numLoopSounds = 0;
    std::array<EnvironmentSound, MAX_ENVIRONMENT_SOUNDS> environmentSounds;
    std::int32_t numEnvironmentSounds = 0;
    AliasHandle pictureFileAlias;
    int pictureForkRef = -1;  // the picture file, held open for reading while it is the picture
    QImage picture;

    // Playback fields.
    std::array<MovieEntry, MAX_MOVIES> movies;
    std::int32_t numMovies = 0;
    EventLoopTimerRef moviesTaskTimerRef = nullptr;
    std::unique_ptr<FileWatcher> unreadableFiles;  // while a loop sound is unreadable
    EventLoopWatchRef unreadableWatch = nullptr;

    audio::Engine& engine;
    EventLoop& eventLoop;
    std::function<void()> previewStopper;
    std::function<bool()> saveCanceller;
    std::function<void()> unreadableListener;
    std::function<double()> tickListener;

    // Helpers shared by the concerns' source files.
    LoopSound* findLoopSound(SoundID id);
    const LoopSound* findLoopSound(SoundID id) const;
    EnvironmentSound* findEnvironmentSound(SoundID id);
    const EnvironmentSound* findEnvironmentSound(SoundID id) const;
    EnvironmentSoundGroup* findGroup(GroupID id);
    const EnvironmentSoundGroup* findGroup(GroupID id) const;
    void closePictureFork();

    // Pool and scheduler helpers (world_pool.cpp, world_scheduler.cpp), shared with editing.
    void disposeAllMovies();                       // every instance disposed, numMovies = 0
    // Every instance leaves the pool (numMovies = 0); those that sound are handed over, the rest
    // disposed.
    std::vector<std::unique_ptr<audio::SoundInstance>> takeSoundingMovies();
    void removeMoviesTaskTimer();                  // if installed
    double drawUnit();                             // random() / 2147483647.0
    SoundID pickLoopSound();                       // random() mod readable loops; 0 without any
    double drawInterval(SoundID environmentSound); // the group's bounds when grouped, else its own
    double drawVolume(SoundID environmentSound);   // always the sound's own bounds
    void scheduleMovie(int index, double startTime, double volume);  // also readies the instance
    void startLoopChain(double now);               // the two loop picks of start()
    void startFadingIn(double seconds);            // start(), the first loop heard at once
    void scheduleNextLoopSound(double now);        // after a loop instance's play has ended
    // Loop sounds whose files cannot be read (world_unreadable.cpp). An instance of `sound` to
    // schedule, or -1; a sound that cannot be loaded is marked unreadable and another one picked.
    int getPlayableLoopMovie(SoundID& sound);
    void markLoopSoundUnreadable(SoundID id);
    void releaseLoopSuccessors(double now);  // the turn after a play that failed comes now
    void reviveChangedLoopSounds();    // the watch's callback: their files changed
    void watchUnreadableLoopSounds();  // after the set of unreadable sounds changed
    void scheduleNextEnvironmentPlay(SoundID ended, double now);  // the successor of an ended play
    // Whether an entry's turn has come at `now`. An environment sound's turn comes `lead` seconds
    // early (the output's queue), so that it is heard at its time rather than a queue later; a
    // loop's turn is reckoned from the playing loop's own position, which is already render time.
    static bool isDue(const MovieEntry& entry, double now, double lead);
    void serviceMovie(MovieEntry& entry, double now, double lead);  // one entry of the timer's walk
    void updateMovieVolume(MovieEntry& entry);         // what the walk sets on a sounding entry
    std::int16_t volumeAt(const MovieEntry& entry, double position) const;  // ... at that position
    void applyVolumes();                               // the walk's volumes, now
    bool checkScheduling(bool report) const;           // validateScheduling(), silent when asked

    // When the timer next runs (world_wake.cpp). After a tick it sleeps until the first point of
    // its grid at which a tick would change anything; after an edit that may change the schedule,
    // it runs at its next point and works that out again.
    void sleepUntilNeeded(double listenerWants);
    void wakeForNextTick();
    double nextChangeTime(double now) const;
    double entryChangeTime(const MovieEntry& entry, double now, double lead) const;
    double soundingChangeTime(const MovieEntry& entry, double now) const;

    // Editing helpers (world_editing.cpp).
    void takeAudibleAndPending(SoundID id, bool& audible, double& pendingStart) const;
    void removeLoopSoundRecord(int index);
    void removeEnvironmentSoundRecord(int index);
    // pendingStart > 0 hands that turn on; otherwise the play is due after a fresh interval.
    void scheduleEnvironmentPlay(int movieIndex, SoundID sound, double pendingStart);

    // Package helpers (world_package_load.cpp, world_package_save.cpp).
    // Property-list nodes are passed as void* (libplist's plist_t) to keep libplist out of this header.
    OSStatus loadDescription(const FSRef& package);
    void loadGroupsFromPlist(void* root);
    OSStatus loadLoopSoundsFromPlist(const FSRef& package, void* array);
    OSStatus loadEnvironmentSoundsFromPlist(const FSRef& package, void* array);
    bool isLoadedPackage(const FSRef& package) const;
    void releasePackageFiles();  // the preview, every loaded sound and the picture file
    void reloadFromSavedPackage(const FSRef& package, bool wasPlaying);
    OSStatus createTempPackageFor(const FSRef& parent, const QString& packageName, FSRef& temp);
    OSStatus fillTempPackage(const FSRef& parent, const FSRef& temp);  // deleted again when it fails
    OSStatus saveOverExisting(const FSRef& parent, const QString& packageName, const FSRef& existing,
                              bool wasPlaying);
    void noteMissingFile(const Alias& alias, OSStatus status);  // a save's resolution of one file
    FSRef packageBeingReplaced;   // during a save over it: its files are linked, not copied
    QString keptPreviousVersion;  // see getKeptPreviousVersion()
    QString missingFileOfLastSave;  // see getMissingFileOfLastSave()
};

}  // namespace sylvora
