#include "audio/outputs/pulse/pulseoutput.h"

#include <sys/resource.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>

#include "audio/engine/engine.h"

namespace sylvora::audio {

namespace {
constexpr std::size_t FRAME_BYTES = 2 * sizeof(float);
constexpr int AUDIO_NICE = -11;

std::int64_t monotonicNs() noexcept {
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::int64_t>(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
}

// A locked section of the threaded loop, for the main thread.
class LoopLock {
  public:
    explicit LoopLock(pa_threaded_mainloop* loop) : loop_(loop) { pa_threaded_mainloop_lock(loop_); }
    ~LoopLock() { pa_threaded_mainloop_unlock(loop_); }
    LoopLock(const LoopLock&) = delete;
    LoopLock& operator=(const LoopLock&) = delete;

  private:
    pa_threaded_mainloop* loop_;
};
}  // namespace

PulseOutput::PulseOutput(Engine& engine) : engine_(engine) {}

std::unique_ptr<PulseOutput> PulseOutput::open(Engine& engine, std::string& error) {
    std::unique_ptr<PulseOutput> output(new PulseOutput(engine));
    if (!output->connect(engine.lowLatencyWanted(), error))
        return nullptr;
    engine.setOutputLink(output.get());
    output->linked_ = true;
    return output;
}

std::unique_ptr<PulseOutput> PulseOutput::openHeld(Engine& engine, bool lowLatency, std::function<void()> lost,
                                                   const std::atomic<bool>& abandon, std::string& error) {
    std::unique_ptr<PulseOutput> output(new PulseOutput(engine));
    output->pulling_.store(false, std::memory_order_relaxed);
    output->lostListener_ = std::move(lost);
    output->abandon_ = &abandon;
    if (!output->connect(lowLatency, error))
        return nullptr;
    return output;
}

bool PulseOutput::connect(bool lowLatency, std::string& error) {
    loop_ = pa_threaded_mainloop_new();
    if (!loop_) {
        error = "PulseAudio: no main loop";
        return false;
    }
    pa_proplist* props = pa_proplist_new();
    pa_proplist_sets(props, PA_PROP_APPLICATION_NAME, "Sylvora");
    pa_proplist_sets(props, PA_PROP_APPLICATION_ID, "org.sylvora.Sylvora");
    pa_proplist_sets(props, "context.force.disable.shm", "true");
    context_ = pa_context_new_with_proplist(pa_threaded_mainloop_get_api(loop_), "Sylvora", props);
    pa_proplist_free(props);
    if (!context_) {
        error = "PulseAudio: no context";
        return false;
    }
    pa_context_set_state_callback(context_, &PulseOutput::contextChanged, this);
    // Never start a server of our own: a machine without one plays through SDL instead.
    if (pa_context_connect(context_, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr) < 0) {
        error = std::string("PulseAudio: ") + pa_strerror(pa_context_errno(context_));
        return false;
    }
    connectDeadlineNs_ = monotonicNs() + static_cast<std::int64_t>(CONNECT_TIMEOUT_SECONDS * 1e9);
    connectCheck_ = pa_context_rttime_new(
        context_, pa_rtclock_now() + static_cast<pa_usec_t>(CONNECT_CHECK_SECONDS * PA_USEC_PER_SEC),
        &PulseOutput::connectCheckDue, this);
    LoopLock lock(loop_);
    if (pa_threaded_mainloop_start(loop_) < 0) {
        error = "PulseAudio: the main loop does not start";
        return false;
    }
    for (;;) {
        const pa_context_state_t state = pa_context_get_state(context_);
        if (state == PA_CONTEXT_READY)
            break;
        if (givenUp(error))
            return false;
        if (!PA_CONTEXT_IS_GOOD(state)) {
            error = std::string("PulseAudio: ") + pa_strerror(pa_context_errno(context_));
            return false;
        }
        pa_threaded_mainloop_wait(loop_);
    }

    const pa_sample_spec spec{PA_SAMPLE_FLOAT32NE, static_cast<std::uint32_t>(engine_.sampleRate()), 2};
    stream_ = pa_stream_new(context_, "Sylvora", &spec, nullptr);
    if (!stream_) {
        error = std::string("PulseAudio: ") + pa_strerror(pa_context_errno(context_));
        return false;
    }
    pa_stream_set_state_callback(stream_, &PulseOutput::streamChanged, this);
    pa_stream_set_write_callback(stream_, &PulseOutput::writeRequested, this);
    pa_stream_set_underflow_callback(stream_, &PulseOutput::underflowed, this);
    shortBuffer_ = lowLatency;
    heldBack_ = shortBuffer_ ? 0 : bytes(LONG_HELD_BACK_SECONDS);
    pa_buffer_attr attr = bufferAttr(shortBuffer_);
    // Corked until start(). The server is asked for no latency of its own beyond the buffer.
    const auto flags = static_cast<pa_stream_flags_t>(PA_STREAM_START_CORKED);
    if (pa_stream_connect_playback(stream_, nullptr, &attr, flags, nullptr, nullptr) < 0) {
        error = std::string("PulseAudio: ") + pa_strerror(pa_context_errno(context_));
        return false;
    }
    while (pa_stream_get_state(stream_) != PA_STREAM_READY) {
        if (givenUp(error))
            return false;
        if (!PA_STREAM_IS_GOOD(pa_stream_get_state(stream_))) {
            error = std::string("PulseAudio: ") + pa_strerror(pa_context_errno(context_));
            return false;
        }
        pa_threaded_mainloop_wait(loop_);
    }
    const char* server = pa_context_get_server(context_);
    description_ = std::string("PulseAudio") + (server ? std::string(" (") + server + ")" : std::string()) + ", " +
                   std::to_string(engine_.sampleRate()) + " Hz";
    pa_threaded_mainloop_get_api(loop_)->time_free(connectCheck_);
    connectCheck_ = nullptr;
    connected_ = true;
    return true;
}

bool PulseOutput::givenUp(std::string& error) const {
    if (connectGivenUp_)
        error = "PulseAudio: the sound server does not answer";
    return connectGivenUp_;
}

void PulseOutput::connectCheckDue(pa_mainloop_api* /*api*/, pa_time_event* event, const struct timeval* /*when*/,
                                  void* self) {
    auto* output = static_cast<PulseOutput*>(self);
    const bool abandoned = output->abandon_ != nullptr && output->abandon_->load(std::memory_order_acquire);
    if (abandoned || monotonicNs() >= output->connectDeadlineNs_) {
        output->connectGivenUp_ = true;
        pa_threaded_mainloop_signal(output->loop_, 0);
        return;
    }
    pa_context_rttime_restart(output->context_, event,
                              pa_rtclock_now() + static_cast<pa_usec_t>(CONNECT_CHECK_SECONDS * PA_USEC_PER_SEC));
}

PulseOutput::~PulseOutput() {
    if (linked_)
        engine_.setOutputLink(nullptr);
    if (loop_)
        pa_threaded_mainloop_stop(loop_);
    // The disconnects below end the connection on purpose.
    lostListener_ = nullptr;
    if (longReturn_)
        pa_threaded_mainloop_get_api(loop_)->time_free(longReturn_);
    if (timingCheck_)
        pa_threaded_mainloop_get_api(loop_)->time_free(timingCheck_);
    if (connectCheck_)
        pa_threaded_mainloop_get_api(loop_)->time_free(connectCheck_);
    if (stream_) {
        pa_stream_disconnect(stream_);
        pa_stream_unref(stream_);
    }
    if (context_) {
        pa_context_disconnect(context_);
        pa_context_unref(context_);
    }
    if (loop_)
        pa_threaded_mainloop_free(loop_);
}

void PulseOutput::pullEngine() {
    LoopLock lock(loop_);
    pulling_.store(true, std::memory_order_release);
    if (started_)
        return;
    // The server asks for the queue again at once, and gets the engine this time.
    if (pa_operation* op = pa_stream_flush(stream_, &PulseOutput::operationDone, this)) {
        while (pa_operation_get_state(op) == PA_OPERATION_RUNNING)
            pa_threaded_mainloop_wait(loop_);
        pa_operation_unref(op);
    }
    corkedNs_ = 0;
}

bool PulseOutput::start() {
    LoopLock lock(loop_);
    if (started_)
        return true;
    pa_operation* op = pa_stream_cork(stream_, 0, &PulseOutput::operationDone, this);
    if (!op)
        return false;
    while (pa_operation_get_state(op) == PA_OPERATION_RUNNING)
        pa_threaded_mainloop_wait(loop_);
    pa_operation_unref(op);
    started_ = true;
    // What was written while corked begins to play now.
    dryAtNs_.store(monotonicNs() + corkedNs_, std::memory_order_relaxed);
    corkedNs_ = 0;
    askTimingSoon();
    return true;
}

void PulseOutput::stop() {
    LoopLock lock(loop_);
    if (!started_)
        return;
    // Once corked and answered, the server asks for nothing more: render() is not called again.
    if (pa_operation* op = pa_stream_cork(stream_, 1, &PulseOutput::operationDone, this)) {
        while (pa_operation_get_state(op) == PA_OPERATION_RUNNING)
            pa_threaded_mainloop_wait(loop_);
        pa_operation_unref(op);
    }
    started_ = false;
    corkedNs_ = std::max<std::int64_t>(dryAtNs_.load(std::memory_order_relaxed) - monotonicNs(), 0);
}

void PulseOutput::setLowLatency(bool wanted) {
    LoopLock lock(loop_);
    pa_mainloop_api* api = pa_threaded_mainloop_get_api(loop_);
    if (wanted) {
        if (longReturn_) {
            api->time_free(longReturn_);
            longReturn_ = nullptr;
        }
        applyBuffer(true);
        return;
    }
    if (!shortBuffer_ || longReturn_)
        return;
    const pa_usec_t when = pa_rtclock_now() + static_cast<pa_usec_t>(LONG_RETURN_SECONDS * PA_USEC_PER_SEC);
    longReturn_ = pa_context_rttime_new(context_, when, &PulseOutput::longReturnDue, this);
}

std::size_t PulseOutput::bytes(double seconds) const {
    return static_cast<std::size_t>(seconds * engine_.sampleRate()) * FRAME_BYTES;
}

pa_buffer_attr PulseOutput::bufferAttr(bool shortBuffer) const {
    pa_buffer_attr attr{};
    attr.maxlength = static_cast<std::uint32_t>(-1);
    attr.fragsize = static_cast<std::uint32_t>(-1);
    if (shortBuffer) {
        attr.tlength = static_cast<std::uint32_t>(bytes(SHORT_BUFFER_SECONDS));
        attr.minreq = static_cast<std::uint32_t>(bytes(SHORT_REQUEST_SECONDS));
    } else {
        attr.tlength = static_cast<std::uint32_t>(bytes(LONG_BUFFER_SECONDS + LONG_HELD_BACK_SECONDS));
        attr.minreq = static_cast<std::uint32_t>(bytes(LONG_REQUEST_SECONDS));
    }
    // After an underrun, play resumes once one request is back.
    attr.prebuf = attr.minreq;
    return attr;
}

void PulseOutput::applyBuffer(bool shortBuffer) {
    if (shortBuffer == shortBuffer_)
        return;
    shortBuffer_ = shortBuffer;
    heldBack_ = shortBuffer ? 0 : bytes(LONG_HELD_BACK_SECONDS);
    const pa_buffer_attr attr = bufferAttr(shortBuffer);
    if (pa_operation* op = pa_stream_set_buffer_attr(stream_, &attr, nullptr, nullptr))
        pa_operation_unref(op);
    askTimingSoon();
    // The server counts the credit it granted as on its way; with the short buffer it would never
    // ask again until it came, so it comes now (a short while of the long queue, heard before
    // the short buffer takes over).
    if (shortBuffer)
        writeRequested(stream_, pa_stream_writable_size(stream_), this);
}

std::uint64_t PulseOutput::framesPlayed() {
    LoopLock lock(loop_);
    if (pa_operation* op = pa_stream_update_timing_info(stream_, &PulseOutput::operationDone, this)) {
        while (pa_operation_get_state(op) == PA_OPERATION_RUNNING)
            pa_threaded_mainloop_wait(loop_);
        pa_operation_unref(op);
    }
    pa_usec_t usec = 0;
    if (pa_stream_get_time(stream_, &usec) < 0)
        return 0;
    return usec * static_cast<std::uint64_t>(engine_.sampleRate()) / PA_USEC_PER_SEC;
}

void PulseOutput::contextChanged(pa_context* context, void* self) {
    auto* output = static_cast<PulseOutput*>(self);
    if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context)))
        output->connectionFailed();
    pa_threaded_mainloop_signal(output->loop_, 0);
}

void PulseOutput::streamChanged(pa_stream* stream, void* self) {
    auto* output = static_cast<PulseOutput*>(self);
    const pa_stream_state_t state = pa_stream_get_state(stream);
    // The loop's thread renders every block: like the streaming thread, it should not queue behind
    // whatever else keeps the cores busy while the queue drains. Without the privilege to raise
    // its priority it keeps the normal one.
    if (state == PA_STREAM_READY)
        setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), AUDIO_NICE);
    else if (!PA_STREAM_IS_GOOD(state))
        output->connectionFailed();
    pa_threaded_mainloop_signal(output->loop_, 0);
}

void PulseOutput::connectionFailed() {
    // A failure while connecting is open()'s to report.
    if (!connected_ || lost_.exchange(true, std::memory_order_acq_rel))
        return;
    if (lostListener_)
        lostListener_();
}

void PulseOutput::operationDone(pa_stream* /*stream*/, int /*success*/, void* self) {
    pa_threaded_mainloop_signal(static_cast<PulseOutput*>(self)->loop_, 0);
}

void PulseOutput::writeRequested(pa_stream* stream, std::size_t writable, void* self) {
    auto* output = static_cast<PulseOutput*>(self);
    // The long buffer's credit beyond the queue we keep is left unused.
    if (writable <= output->heldBack_)
        return;
    std::size_t bytes = writable - output->heldBack_;
    std::size_t written = 0;
    while (bytes >= FRAME_BYTES) {
        // Rendered straight into the block that is sent: no copy of our own.
        void* data = nullptr;
        std::size_t span = bytes;
        if (pa_stream_begin_write(stream, &data, &span) < 0 || !data)
            break;
        const std::size_t frames = std::min(span, bytes) / FRAME_BYTES;
        if (output->pulling_.load(std::memory_order_acquire))
            output->engine_.render(static_cast<float*>(data), frames);
        else
            std::fill_n(static_cast<float*>(data), frames * 2, 0.0f);
        if (pa_stream_write(stream, data, frames * FRAME_BYTES, nullptr, 0, PA_SEEK_RELATIVE) < 0)
            break;
        output->written_.fetch_add(frames, std::memory_order_release);
        written += frames;
        bytes -= frames * FRAME_BYTES;
    }
    // The server plays what it holds at the engine's rate, so each frame written puts off by a
    // frame's time the moment the queue would run dry.
    const std::int64_t added = static_cast<std::int64_t>(written) * 1'000'000'000 / output->engine_.sampleRate();
    const std::int64_t now = monotonicNs();
    if (!output->started_) {
        output->corkedNs_ += added;
    } else {
        const std::int64_t dryAt = std::max(output->dryAtNs_.load(std::memory_order_relaxed), now);
        output->dryAtNs_.store(dryAt + added, std::memory_order_relaxed);
    }
}

double PulseOutput::queuedSeconds() const {
    const std::int64_t left = dryAtNs_.load(std::memory_order_relaxed) - monotonicNs();
    return static_cast<double>(std::max<std::int64_t>(left, 0) + sinkLatencyNs_.load(std::memory_order_relaxed)) * 1e-9;
}

void PulseOutput::askTiming() {
    if (pa_operation* op = pa_stream_update_timing_info(stream_, &PulseOutput::timingUpdated, this))
        pa_operation_unref(op);
}

// The server's device side settles to a new stream's needs only once it plays for it, so the
// first answer is asked for a moment later, then every TIMING_CHECK_SECONDS.
void PulseOutput::askTimingSoon() {
    const pa_usec_t when = pa_rtclock_now() + static_cast<pa_usec_t>(TIMING_SETTLE_SECONDS * PA_USEC_PER_SEC);
    if (timingCheck_)
        pa_context_rttime_restart(context_, timingCheck_, when);
    else
        timingCheck_ = pa_context_rttime_new(context_, when, &PulseOutput::timingCheckDue, this);
}

void PulseOutput::timingCheckDue(pa_mainloop_api* /*api*/, pa_time_event* event, const struct timeval* /*when*/,
                                  void* self) {
    auto* output = static_cast<PulseOutput*>(self);
    // Stopped, the stream is not asked about until start() asks again.
    if (!output->started_)
        return;
    output->askTiming();
    pa_context_rttime_restart(output->context_, event,
                              pa_rtclock_now() + static_cast<pa_usec_t>(TIMING_CHECK_SECONDS * PA_USEC_PER_SEC));
}

void PulseOutput::timingUpdated(pa_stream* stream, int success, void* self) {
    auto* output = static_cast<PulseOutput*>(self);
    const pa_timing_info* info = success ? pa_stream_get_timing_info(stream) : nullptr;
    // Until the device side plays for the stream, its latency is that of an idle device: ask again.
    if (!info || !info->playing) {
        if (output->started_)
            output->askTimingSoon();
    } else {
        output->sinkLatencyNs_.store(static_cast<std::int64_t>(info->sink_usec) * 1000, std::memory_order_relaxed);
        // The server's count of what it holds corrects ours, which only adds writes and subtracts
        // time: a server that reads its queue in blocks runs dry later than time alone says.
        if (output->started_ && !info->write_index_corrupt && !info->read_index_corrupt &&
            info->write_index >= info->read_index) {
            const auto held = static_cast<std::int64_t>(info->write_index - info->read_index);
            const std::int64_t bytesPerSecond = static_cast<std::int64_t>(FRAME_BYTES) * output->engine_.sampleRate();
            output->dryAtNs_.store(monotonicNs() + held * 1'000'000'000 / bytesPerSecond, std::memory_order_relaxed);
        }
    }
    pa_threaded_mainloop_signal(output->loop_, 0);
}

void PulseOutput::underflowed(pa_stream* /*stream*/, void* self) {
    static_cast<PulseOutput*>(self)->underruns_.fetch_add(1, std::memory_order_relaxed);
}

void PulseOutput::longReturnDue(pa_mainloop_api* api, pa_time_event* event, const struct timeval* /*when*/,
                                void* self) {
    auto* output = static_cast<PulseOutput*>(self);
    api->time_free(event);
    output->longReturn_ = nullptr;
    output->applyBuffer(false);
}

}  // namespace sylvora::audio
