// Starting and stopping a world, its environment plays and groups, and the world's volume.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <map>
#include <set>

#include "core/platform/beep.h"
#include "support/worldfixture.h"

namespace sylvora::test {
namespace {

// Follows every play of one world, tick by tick: when each entry was given a start time, when it
// began to sound and when its play ended.
struct Play {
    int entry = -1;
    SoundID sound = 0;
    double scheduledAt = 0.0;  // clock when the start time was set (or -1 when set by start())
    double startTime = 0.0;
    int startTick = -1;
    int endTick = -1;
    int volumeAtStart = -1;
};

class PlayLog {
public:
    explicit PlayLog(WorldFixture& world) : w_(world) { snapshot(-1, world.now()); }

    void onTick(int tick) {
        const double now = w_.timeOfTick(tick);
        for (int i = 0; i < w_.world.getNumMovies(); ++i) {
            const MovieEntry& e = w_.entry(i);
            auto open = current_.find(i);
            const bool sounding = e.movie->rate() != 0.0;
            if (open != current_.end()) {
                Play& play = plays_[open->second];
                if (play.startTick < 0 && sounding) {
                    play.startTick = tick;
                    play.volumeAtStart = e.movie->volume();
                }
                if (play.startTick >= 0 && !sounding) {
                    play.endTick = tick;
                    current_.erase(open);
                    open = current_.end();
                }
            }
            if (open == current_.end() && e.startTime > 0.0 && (!sounding || tick < 0)) {
                add(i, e, now);
            }
        }
    }

    const std::vector<Play>& plays() const { return plays_; }
    std::vector<Play> playsOf(SoundID sound) const {
        std::vector<Play> result;
        for (const Play& p : plays_) {
            if (p.sound == sound) result.push_back(p);
        }
        return result;
    }

private:
    void snapshot(int tick, double now) {
        for (int i = 0; i < w_.world.getNumMovies(); ++i) {
            if (w_.entry(i).startTime > 0.0) add(i, w_.entry(i), now);
        }
        (void)tick;
    }
    void add(int index, const MovieEntry& e, double now) {
        Play play;
        play.entry = index;
        play.sound = e.soundID;
        play.scheduledAt = now;
        play.startTime = e.startTime;
        current_[index] = plays_.size();
        plays_.push_back(play);
    }

    WorldFixture& w_;
    std::vector<Play> plays_;
    std::map<int, std::size_t> current_;
};

// What start() schedules, drawn in one documented order so that another build replays a seed the
// same way: two loop picks, then per ungrouped sound its interval and volume, then per group its
// member, interval and volume. A group without members is not scheduled.
TEST(WorldStart, SchedulesTheLoopChainAndOnePlayPerSoundAndGroupInTheDocumentedOrder) {
    constexpr unsigned SEED = 1234;
    WorldFixture w(SEED);
    w.world.setLoopSoundsCrossFadeDuration(2);
    std::vector<SoundID> loops;
    for (int i = 0; i < 3; ++i) {
        loops.push_back(w.addLoop(w.writeSound(QStringLiteral("l%1.wav").arg(i), 4.0 + i, 300.0)));
        w.world.setLoopSoundVolume(loops.back(), 0.8);
    }
    const SoundID alone = w.addEnvironment(w.writeSound("alone.wav", 0.2, 1000.0));
    w.world.setEnvironmentSoundMinInterval(alone, 10);
    w.world.setEnvironmentSoundMaxInterval(alone, 20);
    w.world.setEnvironmentSoundMinVolume(alone, 0.2);
    w.world.setEnvironmentSoundMaxVolume(alone, 0.8);
    const GroupID group = w.world.addGroup(QStringLiteral("G"));
    ASSERT_NE(w.world.addGroup(QStringLiteral("Nobody")), 0u);
    w.world.setGroupMinInterval(group, 30);
    w.world.setGroupMaxInterval(group, 50);
    std::vector<SoundID> members;
    for (int m = 0; m < 3; ++m) {
        members.push_back(w.addEnvironment(w.writeSound(QStringLiteral("m%1.wav").arg(m), 0.2, 1200.0)));
        w.world.setEnvironmentSoundGroupID(members.back(), group);
        w.world.setEnvironmentSoundMinVolume(members.back(), 0.1 * (m + 1));
        w.world.setEnvironmentSoundMaxVolume(members.back(), 0.1 * (m + 1));
    }
    const double now = w.now();
    w.world.start();
    ASSERT_TRUE(w.world.isPlaying());
    EXPECT_EQ(w.eventLoop.timerCount(), 1);

    srandom(SEED);
    const auto unit = [] { return static_cast<double>(random()) / 2147483647.0; };
    const SoundID k1 = loops[static_cast<std::size_t>(random() % 3)];
    const SoundID k2 = loops[static_cast<std::size_t>(random() % 3)];
    const double aloneStart = now + 10.0 + unit() * 10.0;
    const double aloneVolume = 0.2 + unit() * 0.6;
    const std::size_t pick = static_cast<std::size_t>(random() % 3);
    const double memberStart = now + 30.0 + unit() * 20.0;

    // The first loop instance plays at once at full volume; the next is due a crossfade before its end.
    const int first = w.entriesOf(k1).front();
    const int second = w.entriesOf(k2).back();
    EXPECT_EQ(w.entry(first).startTime, now);
    EXPECT_TRUE(w.entry(first).skipFadeIn);
    EXPECT_DOUBLE_EQ(w.entry(second).startTime, now + w.entry(first).duration - 2.0);
    EXPECT_FALSE(w.entry(second).skipFadeIn);
    EXPECT_EQ(w.entry(first).volume, 0.8);
    EXPECT_EQ(w.entry(second).volume, 0.8);
    const MovieEntry& aloneEntry = w.entry(w.entriesOf(alone).front());
    EXPECT_DOUBLE_EQ(aloneEntry.startTime, aloneStart);
    EXPECT_DOUBLE_EQ(aloneEntry.volume, aloneVolume);
    const MovieEntry& memberEntry = w.entry(w.entriesOf(members[pick]).front());
    EXPECT_DOUBLE_EQ(memberEntry.startTime, memberStart);
    EXPECT_DOUBLE_EQ(memberEntry.volume, 0.1 * static_cast<double>(pick + 1));
    EXPECT_EQ(w.scheduledEntries().size(), 4u);

    // Starting again while playing changes nothing.
    w.world.start();
    EXPECT_EQ(w.eventLoop.timerCount(), 1);
    EXPECT_EQ(w.scheduledEntries().size(), 4u);
    EXPECT_EQ(aloneEntry.startTime, aloneStart);

    // The first loop instance sounds from the first tick, entering silently, then at full volume.
    w.runTicks(1);
    EXPECT_NE(w.entry(first).movie->rate(), 0.0);
    EXPECT_EQ(w.entry(first).movie->volume(), 0);
    w.runTicks(1);
    EXPECT_EQ(w.entry(first).movie->volume(), expectedVolume(1.0, 0.8, 1.0));
}

TEST(WorldStart, StopUnschedulesEverythingAndStartReusesTheRewoundInstances) {
    WorldFixture w;
    const SoundID loop = w.addLoop(w.writeSound("loop.wav", 4.0, 440.0));
    const SoundID env = w.addEnvironment(w.writeSound("env.wav", 0.3, 3000.0));
    w.world.setEnvironmentSoundMinInterval(env, 1);
    w.world.setEnvironmentSoundMaxInterval(env, 1);
    w.world.start();
    w.runSeconds(2.0);
    const int loaded = w.world.getNumMovies();
    std::vector<const audio::SoundInstance*> instances;
    for (int i = 0; i < loaded; ++i) instances.push_back(w.entry(i).movie.get());
    ASSERT_GT(w.positionOf(w.entriesOf(loop).front()), 1.5);

    w.world.stop();
    EXPECT_FALSE(w.world.isPlaying());
    EXPECT_EQ(w.eventLoop.timerCount(), 0);
    EXPECT_TRUE(w.scheduledEntries().empty());
    for (int i = 0; i < loaded; ++i) EXPECT_EQ(w.entry(i).movie->rate(), 0.0);
    w.world.stop();  // stopping a stopped world is harmless

    w.runSeconds(1.0);
    w.world.start();
    EXPECT_EQ(w.world.getNumMovies(), loaded) << "stop keeps the instances loaded";
    for (int i = 0; i < loaded; ++i) EXPECT_EQ(w.entry(i).movie.get(), instances[static_cast<std::size_t>(i)]);
    const int first = w.entriesOf(loop).front();
    EXPECT_TRUE(w.entry(first).skipFadeIn);
    w.runTicks(1);
    EXPECT_NE(w.entry(first).movie->rate(), 0.0);
    EXPECT_LE(w.positionOf(first), TICK + 1e-3) << "restarted from its beginning";
}

// Each play starts at the first tick at or after its time, is heard for its length, and the next is
// due an interval after that end; intervals and volumes are drawn between their bounds, and equal
// bounds give fixed values.
// An output's queue of a fixed length, as a sound server's is in steady play.
struct FixedOutputQueue final : audio::OutputLink {
    explicit FixedOutputQueue(double length) : seconds(length) {}
    void setLowLatency(bool) override {}
    double queuedSeconds() const override { return seconds; }
    double seconds;
};

// Each play starts at its turn and the next is drawn when it ends. Behind an output's queue an
// environment sound's turn comes that much early, so it is heard at its time, and the next interval
// runs from where its end is heard; a loop keeps to its own turn.
TEST(EnvironmentPlays, EachPlayFollowsThePreviousEndWithinTheBounds) {
    struct Case {
        int minInterval, maxInterval;
        double minVolume, maxVolume;
        double queue;
    };
    for (const Case& c : {Case{2, 5, 0.25, 1.0, 0.0}, Case{3, 3, 0.5, 0.5, 0.0}, Case{2, 5, 0.25, 1.0, 0.2}}) {
        SCOPED_TRACE(testing::Message() << "intervals " << c.minInterval << ".." << c.maxInterval << ", queue "
                                        << c.queue);
        WorldFixture w(11);
        FixedOutputQueue queue(c.queue);
        w.engine.setOutputLink(&queue);
        const SoundID env = w.addEnvironment(w.writeSound("env.wav", 0.5, 3000.0));
        w.world.setEnvironmentSoundMinInterval(env, c.minInterval);
        w.world.setEnvironmentSoundMaxInterval(env, c.maxInterval);
        w.world.setEnvironmentSoundMinVolume(env, c.minVolume);
        w.world.setEnvironmentSoundMaxVolume(env, c.maxVolume);
        const SoundID loop = c.queue > 0.0 ? w.addLoop(w.writeSound("loop.wav", 2.0, 500.0)) : 0;
        const double started = w.now();
        w.world.start();
        PlayLog log(w);
        w.runSeconds(90.0, [&](int tick) { log.onTick(tick); });

        const std::vector<Play> plays = log.playsOf(env);
        ASSERT_GE(plays.size(), 15u);
        EXPECT_GE(plays[0].startTime, started + c.minInterval);
        EXPECT_LE(plays[0].startTime, started + c.maxInterval);
        std::set<double> intervals;
        std::set<int> volumes;
        for (std::size_t i = 0; i + 1 < plays.size(); ++i) {
            const Play& play = plays[i];
            ASSERT_GE(play.startTick, 0);
            EXPECT_GE(w.timeOfTick(play.startTick) + c.queue, play.startTime);
            EXPECT_LT(w.timeOfTick(play.startTick - 1) + c.queue, play.startTime);
            // Its end is noticed one play length later, within a tick.
            const double heard = (play.endTick - play.startTick) * TICK;
            EXPECT_GE(heard, 0.5 - 1e-6);
            EXPECT_LE(heard, 0.5 + TICK + 1e-6);
            const Play& next = plays[i + 1];
            const double interval = next.startTime - next.scheduledAt - c.queue;
            EXPECT_EQ(w.timeOfTick(play.endTick), next.scheduledAt);
            EXPECT_GE(interval, c.minInterval - 1e-9);
            EXPECT_LE(interval, c.maxInterval + 1e-9);
            intervals.insert(std::round(interval * 10.0));
            volumes.insert(play.volumeAtStart);
            EXPECT_GE(play.volumeAtStart, static_cast<int>(256 * c.minVolume));
            EXPECT_LE(play.volumeAtStart, static_cast<int>(256 * c.maxVolume));
        }
        const bool fixed = c.minInterval == c.maxInterval;
        EXPECT_EQ(intervals.size() > 5, !fixed) << "intervals are drawn unless the bounds are equal";
        EXPECT_EQ(volumes.size() > 5, !fixed) << "volumes are drawn unless the bounds are equal";
        for (const Play& play : log.playsOf(loop)) {
            if (play.startTick > 0) {
                EXPECT_GE(w.timeOfTick(play.startTick), play.startTime);
            }
        }
        w.engine.setOutputLink(nullptr);
    }
}

// An instance stopped at its end before a tick saw the end is done when its next turn comes: that
// turn counts as a play that ended (its successor is drawn at once) and nothing is played.
TEST(EnvironmentPlays, InstanceDoneWhenItsTurnComesEndsThePlayUnplayed) {
    WorldFixture w(3);
    const SoundID env = w.addEnvironment(w.writeSound("env.wav", 0.2, 1000.0));
    w.world.setEnvironmentSoundMinInterval(env, 1);
    w.world.setEnvironmentSoundMaxInterval(env, 1);
    w.world.start();
    const int index = w.entriesOf(env).front();
    for (int tick = 0; tick < 30 && w.entry(index).movie->rate() == 0.0; ++tick) w.runTicks(1);
    ASSERT_NE(w.entry(index).movie->rate(), 0.0);
    std::vector<float> pastTheEnd(static_cast<std::size_t>(w.sampleRate));  // half a second of stereo
    w.engine.render(pastTheEnd.data(), pastTheEnd.size() / 2);
    ASSERT_TRUE(w.entry(index).movie->isDone());

    w.world.stop();
    w.world.start();
    ASSERT_EQ(w.entriesOf(env), std::vector<int>{index});
    const double turn = w.entry(index).startTime;
    bool sounded = false;
    bool turnSeen = false;
    w.runSeconds(1.5, [&](int tick) {
        sounded = sounded || w.entry(index).movie->rate() != 0.0;
        if (!turnSeen && w.timeOfTick(tick) >= turn) {
            turnSeen = true;
            EXPECT_NEAR(w.entry(index).startTime, w.timeOfTick(tick) + 1.0, 1e-9) << "the successor is drawn";
        }
    });
    EXPECT_TRUE(turnSeen);
    EXPECT_FALSE(sounded);
}

TEST(EnvironmentPlays, EveryGroupAndUngroupedSoundHasExactlyOnePlayAtEveryTick) {
    WorldFixture w(5);
    int beeps = 0;
    setSysBeepHook([&] { ++beeps; });
    w.world.setLoopSoundsCrossFadeDuration(1);
    w.addLoop(w.writeSound("loop.wav", 3.0, 220.0));
    std::vector<SoundID> ungrouped;
    for (int i = 0; i < 2; ++i) {
        ungrouped.push_back(w.addEnvironment(w.writeSound(QStringLiteral("u%1.wav").arg(i), 0.4, 1000.0 + 100 * i)));
        w.world.setEnvironmentSoundMinInterval(ungrouped.back(), 0);
        w.world.setEnvironmentSoundMaxInterval(ungrouped.back(), 2);
    }
    std::map<GroupID, std::vector<SoundID>> groups;
    for (int g = 0; g < 2; ++g) {
        const GroupID group = w.world.addGroup(QString());
        w.world.setGroupMinInterval(group, 0);
        w.world.setGroupMaxInterval(group, 1);
        for (int m = 0; m < 3 - g; ++m) {
            const SoundID member = w.addEnvironment(w.writeSound(QStringLiteral("g%1m%2.wav").arg(g).arg(m), 0.3, 2000.0 + 100 * m));
            w.world.setEnvironmentSoundGroupID(member, group);
            groups[group].push_back(member);
        }
    }
    w.world.start();

    int violations = 0;
    StartLog starts;
    testing::internal::CaptureStderr();
    w.runSeconds(60.0, [&](int tick) {
        starts.onTick(w, tick);
        std::map<SoundID, int> scheduled;
        for (const int index : w.scheduledEntries()) {
            if (!w.entry(index).isLoopSound) ++scheduled[w.entry(index).soundID];
        }
        for (const SoundID sound : ungrouped) violations += scheduled[sound] == 1 ? 0 : 1;
        for (const auto& [group, members] : groups) {
            int total = 0;
            for (const SoundID member : members) total += scheduled[member];
            violations += total == 1 ? 0 : 1;
        }
    });
    const std::string diagnostics = testing::internal::GetCapturedStderr();
    setSysBeepHook({});
    EXPECT_EQ(violations, 0);
    EXPECT_EQ(diagnostics, "");
    EXPECT_EQ(beeps, 0);
    // Each time a group comes due one of its members is drawn: over a minute every one plays.
    for (const auto& [group, members] : groups)
        for (const SoundID member : members) EXPECT_GE(starts.countOf(member), 5) << "member " << member;
}

TEST(EnvironmentPlays, ASoundRemovedFromTheWorldIsNotPlayedAgain) {
    WorldFixture w(2);
    const GroupID group = w.world.addGroup(QStringLiteral("Pair"));
    w.world.setGroupMinInterval(group, 1);
    w.world.setGroupMaxInterval(group, 1);
    const SoundID a = w.addEnvironment(w.writeSound("a.wav", 0.2, 1500.0));
    w.world.setEnvironmentSoundGroupID(a, group);
    w.world.start();
    w.runSeconds(0.5);
    // Removing the group takes its member out of the model but leaves the pool alone: the play
    // already due still happens, and nothing follows it.
    w.world.removeGroup(group);
    ASSERT_EQ(w.scheduledEntries().size(), 1u);
    PlayLog log(w);
    testing::internal::CaptureStderr();
    w.runSeconds(6.0, [&](int tick) { log.onTick(tick); });
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    ASSERT_EQ(log.plays().size(), 1u);
    EXPECT_GE(log.plays()[0].endTick, 0);
    EXPECT_TRUE(w.scheduledEntries().empty());
}

TEST(WorldVolume, ScalesEveryInstanceAtOnce) {
    WorldFixture w;
    w.world.setLoopSoundsCrossFadeDuration(0);
    const SoundID loop = w.addLoop(w.writeSound("loop.wav", 5.0, 440.0));
    const SoundID env = w.addEnvironment(w.writeSound("env.wav", 1.0, 3000.0));
    w.world.setEnvironmentSoundMinInterval(env, 1);
    w.world.setEnvironmentSoundMaxInterval(env, 1);
    w.world.setVolume(0.5);
    w.world.start();
    w.runSeconds(1.2);
    const int loopEntry = w.entriesOf(loop).front();
    const int envEntry = w.entriesOf(env).front();
    ASSERT_NE(w.entry(envEntry).movie->rate(), 0.0);
    EXPECT_EQ(w.entry(loopEntry).movie->volume(), 128);
    EXPECT_EQ(w.entry(envEntry).movie->volume(), 128);

    w.world.setVolume(0.3);
    EXPECT_EQ(w.entry(loopEntry).movie->volume(), 76);
    EXPECT_EQ(w.entry(envEntry).movie->volume(), 76);
    w.runTicks(1);
    EXPECT_EQ(w.entry(loopEntry).movie->volume(), 76);
}

TEST(WorldVolume, SmallChangesAreIgnoredAndValuesClamped) {
    WorldFixture w;
    EXPECT_EQ(w.world.getVolume(), 1.0);
    w.world.setVolume(1.00005);
    EXPECT_EQ(w.world.getVolume(), 1.0);
    w.world.setVolume(-3.0);
    EXPECT_EQ(w.world.getVolume(), 0.0);
    w.world.setVolume(0.00009);
    EXPECT_EQ(w.world.getVolume(), 0.0);
    w.world.setVolume(7.0);
    EXPECT_EQ(w.world.getVolume(), 1.0);
    w.world.setVolume(0.5);
    EXPECT_EQ(w.world.getVolume(), 0.5);
    EXPECT_FALSE(w.world.getModified());
}

}  // namespace
}  // namespace sylvora::test
