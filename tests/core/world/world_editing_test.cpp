// Editing a world while it plays: every add, remove and regrouping leaves the schedule whole, with
// one loop instance sounding or due, and one play scheduled per ungrouped sound and per group.
// Driven on the virtual event loop with rendered audio and a seeded random generator.

#include <set>

#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

constexpr double LOOP_SECONDS = 3.0;
constexpr int CROSSFADE = 1;

// The loop entries of the pool, as the chain sees them.
struct LoopState {
    int audibleFirst = -1;  // the chain's current instance (skipFadeIn or the older one)
    int pending = -1;       // the scheduled, silent one
};

class WorldEditingTest : public WorldTest {
protected:
    // With three loop sounds this seed's first two picks differ, and a restart after the first
    // one's removal picks the sound that was not in the chain.
    static constexpr unsigned EDITING_SEED = 4;
    WorldEditingTest() : WorldTest(EDITING_SEED) {}

    void SetUp() override { world.setLoopSoundsCrossFadeDuration(CROSSFADE); }

    SoundID addLoop(const char* name, double frequency) {
        const SoundID id = world.addLoopSound(*soundAlias(QString::fromLatin1(name), LOOP_SECONDS, frequency));
        EXPECT_NE(id, 0u);
        return id;
    }
    SoundID addEnvironment(const char* name, double seconds = 0.5) {
        const SoundID id = world.addEnvironmentSound(*soundAlias(QString::fromLatin1(name), seconds));
        EXPECT_NE(id, 0u);
        return id;
    }

    // Scheduled loop entries, in pool order.
    std::vector<int> scheduledLoopEntries() const {
        std::vector<int> result;
        for (int i = 0; i < world.getNumMovies(); ++i) {
            const MovieEntry& entry = world.getMovieEntry(i);
            if (entry.isLoopSound && entry.startTime > 0.0) result.push_back(i);
        }
        return result;
    }
    const audio::SoundInstance& movieOf(int index) const { return *world.getMovieEntry(index).movie; }

    // Total scheduled plays over the group's members.
    int groupScheduledCount(GroupID group) const {
        int total = 0;
        for (int i = 0; i < world.getNumEnvironmentSounds(); ++i) {
            const SoundID id = world.getIndEnvironmentSoundID(i);
            if (world.getEnvironmentSoundGroupID(id) == group) total += scheduledCount(id);
        }
        return total;
    }
    SoundID scheduledMember(GroupID group) const {
        for (int i = 0; i < world.getNumEnvironmentSounds(); ++i) {
            const SoundID id = world.getIndEnvironmentSoundID(i);
            if (world.getEnvironmentSoundGroupID(id) == group && scheduledCount(id) > 0) return id;
        }
        return 0;
    }

    // A group of two 2-s sounds, 2..4 s apart, played until its first play has begun: the group,
    // the member sounding and the other one.
    struct GroupOfTwo {
        GroupID group;
        SoundID audible;
        SoundID other;
    };
    GroupOfTwo playGroupOfTwo() {
        const GroupID group = world.addGroup(QString());
        world.setGroupMinInterval(group, 2);
        world.setGroupMaxInterval(group, 4);
        const SoundID s1 = addEnvironment("one.wav", 2.0);
        const SoundID s2 = addEnvironment("two.wav", 2.0);
        world.setEnvironmentSoundGroupID(s1, group);
        world.setEnvironmentSoundGroupID(s2, group);
        world.start();
        EXPECT_EQ(groupScheduledCount(group), 1);
        play(4.2);
        const SoundID audible = isAudible(s1) ? s1 : s2;
        EXPECT_TRUE(isAudible(audible));
        return {group, audible, audible == s1 ? s2 : s1};
    }

    struct Snapshot {
        SoundID soundID;
        double startTime;
        double volume;
        bool skipFadeIn;
        bool sounding;
        bool operator==(const Snapshot&) const = default;
    };
    std::vector<Snapshot> snapshotWithout(SoundID excluded) const {
        std::vector<Snapshot> result;
        for (int i = 0; i < world.getNumMovies(); ++i) {
            const MovieEntry& e = world.getMovieEntry(i);
            if (e.soundID == excluded) continue;
            result.push_back({e.soundID, e.startTime, e.volume, e.skipFadeIn, e.movie->rate() != 0.0});
        }
        return result;
    }
};

// ---- Adding

TEST_F(WorldEditingTest, AnEnvironmentSoundAddedWhilePlayingIsDueWithinItsInterval) {
    world.start();
    play(0.5);
    const double added = now();
    const SoundID env = addEnvironment("env.wav");
    ASSERT_EQ(scheduledCount(env), 1);
    const MovieEntry& entry = world.getMovieEntry(entriesOf(env).front());
    EXPECT_GE(entry.startTime, added + 20.0);
    EXPECT_LE(entry.startTime, added + 40.0);
    EXPECT_EQ(entry.volume, 1.0);
    EXPECT_EQ(entry.movie->rate(), 0.0);
}

TEST_F(WorldEditingTest, TheFirstLoopSoundOfAPlayingWorldStartsAChainAtOnce) {
    world.start();
    play(0.2);
    const double added = now();
    const SoundID a = addLoop("a.wav", 330);

    const std::vector<int> chain = scheduledLoopEntries();
    ASSERT_EQ(chain.size(), 2u);
    const MovieEntry& first = world.getMovieEntry(chain[0]);
    const MovieEntry& second = world.getMovieEntry(chain[1]);
    EXPECT_EQ(first.soundID, a);
    EXPECT_EQ(second.soundID, a);
    EXPECT_TRUE(first.skipFadeIn);
    EXPECT_FALSE(second.skipFadeIn);
    EXPECT_DOUBLE_EQ(first.startTime, added);
    EXPECT_NEAR(second.startTime, added + LOOP_SECONDS - CROSSFADE, 1e-3);

    // It sounds at full volume from the tick after its start.
    EXPECT_GT(play(0.2), 0.1f);
    EXPECT_NE(movieOf(chain[0]).rate(), 0.0);
    EXPECT_EQ(movieOf(chain[0]).volume(), 256);

    // A second loop sound joins later picks only.
    const SoundID b = addLoop("b.wav", 440);
    EXPECT_EQ(scheduledCount(b), 0);
    EXPECT_EQ(scheduledLoopEntries().size(), 2u);
}

// ---- Removing loop sounds

TEST_F(WorldEditingTest, RemovingTheAudibleLoopSoundDuringACrossfadeRestartsTheChain) {
    const SoundID a = addLoop("a.wav", 330);
    const SoundID b = addLoop("b.wav", 440);
    const SoundID c = addLoop("c.wav", 550);
    world.start();
    play(0.1);
    std::vector<int> chain = scheduledLoopEntries();
    ASSERT_EQ(chain.size(), 2u);
    const SoundID outgoing = world.getMovieEntry(chain[0]).soundID;
    const SoundID incoming = world.getMovieEntry(chain[1]).soundID;
    ASSERT_NE(outgoing, incoming) << "seed precondition: the chain's first two picks differ";

    play(LOOP_SECONDS - CROSSFADE / 2.0 - 0.1);  // the middle of the crossfade
    ASSERT_TRUE(isAudible(outgoing));
    ASSERT_TRUE(isAudible(incoming));
    // Removal compacts the pool, so the fading instance is followed by its identity, not its index.
    const auto entryPlaying = [this](SoundID sound, const audio::SoundInstance* movie) {
        for (const int i : entriesOf(sound)) {
            if (movie ? world.getMovieEntry(i).movie.get() == movie : movieOf(i).rate() != 0.0) return i;
        }
        return -1;
    };
    const int fadingBefore = entryPlaying(incoming, nullptr);
    ASSERT_GE(fadingBefore, 0);
    const audio::SoundInstance* fading = world.getMovieEntry(fadingBefore).movie.get();
    const double removedAt = now();

    world.removeLoopSound(outgoing);
    const int incomingEntry = entryPlaying(incoming, fading);
    ASSERT_GE(incomingEntry, 0);

    EXPECT_TRUE(entriesOf(outgoing).empty());
    EXPECT_EQ(world.getLoopSoundIndex(outgoing), -1);
    // A new chain: its first instance started at once (the tick ran) without a fade-in...
    chain = scheduledLoopEntries();
    ASSERT_EQ(chain.size(), 2u);
    const MovieEntry& first = world.getMovieEntry(chain[0]);
    const MovieEntry& second = world.getMovieEntry(chain[1]);
    const int firstIndex = first.startTime <= second.startTime ? chain[0] : chain[1];
    const int secondIndex = firstIndex == chain[0] ? chain[1] : chain[0];
    ASSERT_NE(firstIndex, incomingEntry) << "seed precondition: the restart does not pick the fading instance";
    EXPECT_TRUE(world.getMovieEntry(firstIndex).skipFadeIn);
    EXPECT_DOUBLE_EQ(world.getMovieEntry(firstIndex).startTime, removedAt);
    EXPECT_NE(movieOf(firstIndex).rate(), 0.0);
    EXPECT_NEAR(world.getMovieEntry(secondIndex).startTime, removedAt + LOOP_SECONDS - CROSSFADE, 1e-3);
    for (const int i : chain) {
        const SoundID id = world.getMovieEntry(i).soundID;
        EXPECT_TRUE(id == b || id == c || id == a);
        EXPECT_NE(id, outgoing);
    }

    // ...while the other half of the crossfade plays on, unmanaged, at the volume it had.
    EXPECT_FALSE(world.getMovieEntry(incomingEntry).startTime > 0.0);
    EXPECT_NE(movieOf(incomingEntry).rate(), 0.0);
    const std::int16_t fadingVolume = movieOf(incomingEntry).volume();
    play(0.2);
    EXPECT_EQ(movieOf(firstIndex).volume(), 256);
    EXPECT_NE(movieOf(incomingEntry).rate(), 0.0);
    EXPECT_EQ(movieOf(incomingEntry).volume(), fadingVolume);
}

TEST_F(WorldEditingTest, RemovingTheDueNextLoopSoundGivesItsTurnToANewPick) {
    addLoop("a.wav", 330);
    addLoop("b.wav", 440);
    addLoop("c.wav", 550);
    world.start();
    play(0.5);
    const std::vector<int> chain = scheduledLoopEntries();
    ASSERT_EQ(chain.size(), 2u);
    const SoundID current = world.getMovieEntry(chain[0]).soundID;
    const SoundID next = world.getMovieEntry(chain[1]).soundID;
    ASSERT_NE(current, next) << "seed precondition: the chain's first two picks differ";
    const double turn = world.getMovieEntry(chain[1]).startTime;
    const double currentStart = world.getMovieEntry(chain[0]).startTime;

    world.removeLoopSound(next);

    const std::vector<int> after = scheduledLoopEntries();
    ASSERT_EQ(after.size(), 2u);
    int sounding = -1;
    int waiting = -1;
    for (const int i : after) (movieOf(i).rate() != 0.0 ? sounding : waiting) = i;
    ASSERT_GE(sounding, 0);
    ASSERT_GE(waiting, 0);
    EXPECT_EQ(world.getMovieEntry(sounding).soundID, current);
    EXPECT_DOUBLE_EQ(world.getMovieEntry(sounding).startTime, currentStart);
    EXPECT_NE(world.getMovieEntry(waiting).soundID, next);
    EXPECT_DOUBLE_EQ(world.getMovieEntry(waiting).startTime, turn);
    EXPECT_FALSE(world.getMovieEntry(waiting).skipFadeIn);
}

TEST_F(WorldEditingTest, RemovingALoopSoundOutsideTheChainChangesNothing) {
    const SoundID a = addLoop("a.wav", 330);
    const SoundID b = addLoop("b.wav", 440);
    const SoundID c = addLoop("c.wav", 550);
    world.start();
    play(0.5);
    std::set<SoundID> inChain;
    for (const int i : scheduledLoopEntries()) inChain.insert(world.getMovieEntry(i).soundID);
    SoundID idle = 0;
    for (const SoundID id : {a, b, c}) if (!inChain.contains(id)) idle = id;
    ASSERT_NE(idle, 0u);
    const auto before = snapshotWithout(idle);

    world.removeLoopSound(idle);

    EXPECT_EQ(snapshotWithout(idle), before);
    EXPECT_EQ(world.getNumLoopSounds(), 2);
    EXPECT_TRUE(world.getModified());
}

TEST_F(WorldEditingTest, RemovingTheLastLoopSoundEndsTheChainUntilOneIsAdded) {
    const SoundID a = addLoop("a.wav", 330);
    world.start();
    ASSERT_GT(play(0.3), 0.1f);

    world.removeLoopSound(a);
    EXPECT_TRUE(world.isPlaying());
    EXPECT_TRUE(scheduledLoopEntries().empty());
    EXPECT_EQ(world.getNumMovies(), 0);
    play(0.01);  // what the master limiter's look-ahead still holds
    EXPECT_EQ(play(0.3), 0.0f) << "the removed sound falls silent at once";
    EXPECT_TRUE(scheduledLoopEntries().empty());

    const double added = now();
    const SoundID b = addLoop("b.wav", 440);
    const std::vector<int> chain = scheduledLoopEntries();
    ASSERT_EQ(chain.size(), 2u);
    EXPECT_EQ(world.getMovieEntry(chain[0]).soundID, b);
    EXPECT_DOUBLE_EQ(world.getMovieEntry(chain[0]).startTime, added);
    EXPECT_TRUE(world.getMovieEntry(chain[0]).skipFadeIn);
    EXPECT_GT(play(0.3), 0.1f);
}

TEST_F(WorldEditingTest, LoopVolumeReachesTheSoundingInstanceAtOnce) {
    const SoundID a = addLoop("a.wav", 330);
    world.start();
    play(0.3);
    const int sounding = scheduledLoopEntries().front();
    ASSERT_EQ(movieOf(sounding).volume(), 256);
    world.setLoopSoundVolume(a, 0.5);
    EXPECT_EQ(movieOf(sounding).volume(), 128) << "a slider is heard without waiting for the timer";
    play(TICK + 0.01);
    EXPECT_EQ(movieOf(sounding).volume(), 128);
}

// ---- Environment sounds and groups

TEST_F(WorldEditingTest, MovingAnAudibleSoundFromAGroupOfTwoIntoNoGroup) {
    const auto [group, moved, other] = playGroupOfTwo();
    const double movedAt = now();

    world.setEnvironmentSoundGroupID(moved, 0);

    EXPECT_FALSE(isAudible(moved)) << "cut off at once";
    EXPECT_EQ(world.getEnvironmentSoundGroupID(moved), 0u);
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(moved), 2);
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(moved), 4);
    ASSERT_EQ(scheduledCount(other), 1);
    ASSERT_EQ(scheduledCount(moved), 1);
    const double otherStart = pendingStartOf(other);
    EXPECT_GE(otherStart, movedAt + 2.0);
    EXPECT_LE(otherStart, movedAt + 4.0);
    const double movedStart = pendingStartOf(moved);
    EXPECT_GE(movedStart, movedAt + 2.0);
    EXPECT_LE(movedStart, movedAt + 4.0);
    for (const int i : entriesOf(moved)) EXPECT_EQ(movieOf(i).time(), 0) << "rewound";
}

TEST_F(WorldEditingTest, JoiningAGroupWithMembersCancelsTheSoundsOwnPlay) {
    const GroupID group = world.addGroup(QString());
    const SoundID member = addEnvironment("member.wav");
    const SoundID loner = addEnvironment("loner.wav");
    world.setEnvironmentSoundGroupID(member, group);
    world.start();
    play(0.2);
    ASSERT_EQ(scheduledCount(loner), 1);
    const double groupTurn = pendingStartOf(member);

    world.setEnvironmentSoundGroupID(loner, group);

    EXPECT_EQ(scheduledCount(loner), 0);
    EXPECT_EQ(groupScheduledCount(group), 1);
    EXPECT_DOUBLE_EQ(pendingStartOf(member), groupTurn);
}

TEST_F(WorldEditingTest, JoiningAnEmptyGroupKeepsThePendingTime) {
    const GroupID group = world.addGroup(QString());
    world.setGroupMinInterval(group, 50);
    world.setGroupMaxInterval(group, 60);
    const SoundID loner = addEnvironment("loner.wav");
    world.start();
    play(0.2);
    const double pending = pendingStartOf(loner);
    ASSERT_GT(pending, 0.0);

    world.setEnvironmentSoundGroupID(loner, group);

    EXPECT_EQ(scheduledCount(loner), 1);
    EXPECT_DOUBLE_EQ(pendingStartOf(loner), pending);
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(loner), 60);
}

TEST_F(WorldEditingTest, RemovingTheMemberThatHoldsTheTurnHandsItOn) {
    const GroupID group = world.addGroup(QString());
    const SoundID m1 = addEnvironment("m1.wav");
    const SoundID m2 = addEnvironment("m2.wav");
    const SoundID m3 = addEnvironment("m3.wav");
    for (const SoundID id : {m1, m2, m3}) world.setEnvironmentSoundGroupID(id, group);
    world.start();
    play(0.2);
    const SoundID holder = scheduledMember(group);
    ASSERT_NE(holder, 0u);
    const double turn = pendingStartOf(holder);

    // A member without the turn leaves the schedule as it is.
    SoundID bystander = 0;
    for (const SoundID id : {m1, m2, m3}) if (id != holder) bystander = id;
    const auto before = snapshotWithout(bystander);
    world.removeEnvironmentSound(bystander);
    EXPECT_EQ(snapshotWithout(bystander), before);

    world.removeEnvironmentSound(holder);
    ASSERT_EQ(world.getNumEnvironmentSounds(), 1);
    const SoundID heir = world.getIndEnvironmentSoundID(0);
    EXPECT_EQ(groupScheduledCount(group), 1);
    EXPECT_DOUBLE_EQ(pendingStartOf(heir), turn);

    world.removeEnvironmentSound(heir);
    EXPECT_EQ(world.getNumEnvironmentSounds(), 0);
    EXPECT_EQ(world.getNumMovies(), 0);
}

TEST_F(WorldEditingTest, RemovingTheAudibleMemberSchedulesAnotherAfterAFreshInterval) {
    const auto [group, playing, heir] = playGroupOfTwo();
    ASSERT_EQ(groupScheduledCount(group), 1);
    const double removedAt = now();

    world.removeEnvironmentSound(playing);

    EXPECT_EQ(groupScheduledCount(group), 1);
    const double next = pendingStartOf(heir);
    EXPECT_GE(next, removedAt + 2.0);
    EXPECT_LE(next, removedAt + 4.0);
    play(0.01);  // what the master limiter's look-ahead still holds
    EXPECT_EQ(play(0.5), 0.0f) << "the removed member falls silent at once";
}

TEST_F(WorldEditingTest, GroupIntervalsReachPendingPlaysOnlyWhenTheMaximumDrops) {
    const GroupID group = world.addGroup(QString());
    const SoundID member = addEnvironment("member.wav");
    world.setEnvironmentSoundGroupID(member, group);
    world.start();
    play(0.2);
    const double pending = pendingStartOf(member);
    ASSERT_GE(pending - now(), 20.0 - 0.2);

    world.setGroupMinInterval(group, 1);
    EXPECT_EQ(world.getEnvironmentSoundMinInterval(member), 1);
    EXPECT_DOUBLE_EQ(pendingStartOf(member), pending);

    play(1.0);
    const double lowered = now();
    world.setGroupMaxInterval(group, 10);
    EXPECT_EQ(world.getEnvironmentSoundMaxInterval(member), 10);
    EXPECT_DOUBLE_EQ(pendingStartOf(member), lowered + 10.0);

    world.setGroupMaxInterval(group, 40);
    EXPECT_DOUBLE_EQ(pendingStartOf(member), lowered + 10.0) << "a raised maximum pushes nothing back";
}

TEST_F(WorldEditingTest, LoweringASoundsMaximumBringsItsPlayForward) {
    const SoundID env = addEnvironment("env.wav");
    world.start();
    play(0.2);
    world.setEnvironmentSoundMinVolume(env, 0.1);
    const double pending = pendingStartOf(env);
    ASSERT_GT(pending - now(), 10.0);
    const double volume = world.getMovieEntry(entriesOf(env).front()).volume;

    world.setEnvironmentSoundMaxInterval(env, 10);
    const double lowered = now();
    EXPECT_DOUBLE_EQ(pendingStartOf(env), lowered + 10.0);
    EXPECT_EQ(world.getMovieEntry(entriesOf(env).front()).volume, volume);

    world.setEnvironmentSoundMaxInterval(env, 40);
    EXPECT_DOUBLE_EQ(pendingStartOf(env), lowered + 10.0);
}

}  // namespace
}  // namespace sylvora::test
