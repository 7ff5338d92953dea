// The file writer that offline renders go through, and the sound server's client against a server
// that never answers. (The null output is what the memory tests and sylvora-cli without a device
// play through; a real server is the end-to-end test's.)

#include <gtest/gtest.h>

#include <poll.h>
#include <sndfile.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <future>

#include "audio/outputs/file/audiofilewriter.h"
#include "audio/outputs/pulse/pulseoutput.h"
#include "audio/outputs/pulse/reconnectingpulseoutput.h"
#include "enginetestsupport.h"

namespace sylvora::test {
namespace {

using audio::AudioFileWriter;
using audio::Engine;
using audio::PulseOutput;
using audio::ReconnectingPulseOutput;

std::vector<float> readBack(const std::string& path, SF_INFO& info) {
    info = SF_INFO{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file)
        return {};
    std::vector<float> samples(static_cast<std::size_t>(info.frames * info.channels));
    sf_readf_float(file, samples.data(), info.frames);
    sf_close(file);
    return samples;
}

TEST(Outputs, FileWriterWritesTheRenderedMixAsWavOrFlac) {
    TempDir dir;
    ToneSpec tone;
    tone.channels = 1;
    Engine engine;
    auto sound = openOrFail(engine, makeSound(dir, QStringLiteral("tone.wav"), tone));
    ASSERT_TRUE(sound);
    sound->start();
    const std::vector<float> mix = renderFrames(engine, 12000);
    for (const char* name : {"out.wav", "out.flac"}) {
        const std::string path = dir.filePath(QString::fromLatin1(name)).toStdString();
        std::string error;
        auto writer = AudioFileWriter::create(path, engine.sampleRate(), error);
        ASSERT_TRUE(writer) << error;
        ASSERT_EQ(writer->write(mix.data(), 5000), noErr);
        ASSERT_EQ(writer->write(mix.data() + 10000, 7000), noErr);
        ASSERT_EQ(writer->close(), noErr);
        SF_INFO info;
        const std::vector<float> back = readBack(path, info);
        EXPECT_EQ(info.frames, 12000) << name;
        EXPECT_EQ(info.samplerate, 48000);
        EXPECT_EQ(info.channels, 2);
        EXPECT_EQ(info.format & SF_FORMAT_TYPEMASK,
                  std::string(name).ends_with("flac") ? SF_FORMAT_FLAC : SF_FORMAT_WAV);
        ASSERT_EQ(back.size(), mix.size());
        for (std::size_t i = 0; i < mix.size(); ++i)
            ASSERT_NEAR(back[i], mix[i], 1e-6) << name << " sample " << i;
    }
}

// A hung sound server: its socket takes connections (the kernel completes them into the backlog)
// and nobody ever answers. PULSE_SERVER points this process's clients at it while it lives.
class MuteServer {
public:
    explicit MuteServer(const QString& path) {
        fd_ = ::socket(AF_UNIX, SOCK_STREAM, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        const QByteArray name = path.toLocal8Bit();
        std::copy_n(name.constData(), std::min<std::size_t>(name.size(), sizeof address.sun_path - 1), address.sun_path);
        bound_ = ::bind(fd_, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 && ::listen(fd_, 8) == 0;
        qputenv("PULSE_SERVER", "unix:" + name);
    }
    ~MuteServer() {
        qunsetenv("PULSE_SERVER");
        for (const int client : clients_) ::close(client);
        ::close(fd_);
    }
    bool listening() const { return bound_; }
    // Whether a client connected within `seconds`; it is then held open and never answered.
    bool connected(double seconds) {
        pollfd waiting{fd_, POLLIN, 0};
        if (::poll(&waiting, 1, static_cast<int>(seconds * 1000)) != 1) return false;
        clients_.push_back(::accept(fd_, nullptr, nullptr));
        return clients_.back() >= 0;
    }

private:
    int fd_ = -1;
    bool bound_ = false;
    std::vector<int> clients_;
};

// Whether `work` finished within `seconds` (it is left to finish on its own thread otherwise).
bool finishesWithin(double seconds, std::function<void()> work) {
    auto done = std::make_shared<std::promise<void>>();
    std::future<void> finished = done->get_future();
    std::thread([done, work = std::move(work)] {
        work();
        done->set_value();
    }).detach();
    return finished.wait_for(std::chrono::duration<double>(seconds)) == std::future_status::ready;
}

TEST(Outputs, AServerThatNeverAnswersHoldsUpNeitherAConnectionNorAQuit) {
    TempDir dir;
    MuteServer server(dir.filePath(QStringLiteral("native")));
    ASSERT_TRUE(server.listening());
    Engine engine;
    // A first connection gives up, with a reason, instead of waiting for ever.
    std::string error;
    std::unique_ptr<PulseOutput> direct;
    ASSERT_TRUE(finishesWithin(PulseOutput::CONNECT_TIMEOUT_SECONDS * 4, [&] { direct = PulseOutput::open(engine, error); }));
    EXPECT_FALSE(direct);
    EXPECT_NE(error.find("does not answer"), std::string::npos) << error;
    ASSERT_TRUE(server.connected(0.0));

    // A quit while the supervisor waits on the mute server ends the attempt; it does not wait it out.
    std::unique_ptr<ReconnectingPulseOutput> output = ReconnectingPulseOutput::waitForServer(engine);
    output->start();
    ASSERT_TRUE(server.connected(PulseOutput::CONNECT_TIMEOUT_SECONDS));
    const bool quit = finishesWithin(PulseOutput::CONNECT_TIMEOUT_SECONDS / 2, [&] { output->stop(); });
    EXPECT_TRUE(quit);
    if (!quit) output.release();  // still stopping on its own thread
}

}  // namespace
}  // namespace sylvora::test
