#include "core/prefs/knownworldsearches.h"

#include <utility>

namespace sylvora {

KnownWorldSearches::~KnownWorldSearches() {
    stopping_ = true;
    join();
}

void KnownWorldSearches::join() {
    if (thread_.joinable())
        thread_.join();
}

bool KnownWorldSearches::busy() const {
    if (running_)
        return true;
    const std::lock_guard lock(mutex_);
    return !findings_.empty();
}

void KnownWorldSearches::start(std::vector<Request> requests) {
    if (busy() || requests.empty())
        return;
    join();  // a finished thread still has to be joined before its object is reused
    running_ = true;
    thread_ = std::thread([this, batch = std::move(requests)]() mutable { search(std::move(batch)); });
}

std::vector<KnownWorldSearches::Finding> KnownWorldSearches::takeFindings() {
    const std::lock_guard lock(mutex_);
    return std::exchange(findings_, {});
}

void KnownWorldSearches::waitUntilFinished() { join(); }

void KnownWorldSearches::search(std::vector<Request> requests) {
    const auto deadline = std::chrono::steady_clock::now() + SHARED_BUDGET;
    for (Request& request : requests) {
        Finding finding{request.id, Outcome::notReached, nullptr};
        if (!stopping_ && std::chrono::steady_clock::now() < deadline) {
            FSRef resolved;
            const OSStatus status = FSResolveAlias(*request.alias, resolved);
            if (status == noErr) {
                finding.outcome = Outcome::found;
                finding.alias = std::move(request.alias);
            } else {
                finding.outcome = status == fnfErr ? Outcome::gone : Outcome::unresolved;
            }
        }
        const std::lock_guard lock(mutex_);
        findings_.push_back(std::move(finding));
    }
    running_ = false;
}

}  // namespace sylvora
