#pragma once

// The searches for known worlds that are no longer where they were, made on a thread of their own
// so that neither start-up nor a menu ever waits for them. Searching the disk for a moved package
// costs up to a fifth of a second, and a list of two hundred gone worlds would cost the person
// forty; here the searches of one batch share one budget, and what they find reaches the list the
// next time it is shown.
//
// Lifecycle: [main] start() a batch when idle -> [search thread] each alias is resolved in full on
// a copy -> [main] takeFindings() collects what is known so far; the destructor stops the thread
// between two searches and waits for it.

#include <QtGlobal>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "core/files/alias.h"

namespace sylvora {

class KnownWorldSearches {
  public:
    // All searches of one batch together stop after this much time; what they did not reach is
    // left for a later batch.
    static constexpr std::chrono::milliseconds SHARED_BUDGET{2000};

    struct Request {
        std::uint64_t id;  // the caller's name for the record
        AliasHandle alias;  // a copy: the search thread never touches the caller's aliases
    };
    enum class Outcome {
        found,       // `alias` holds where the package is now
        gone,        // certainly deleted
        unresolved,  // another failure (unreadable folder, drive gone meanwhile): keep the record
        notReached,  // the budget ran out first
    };
    struct Finding {
        std::uint64_t id;
        Outcome outcome;
        AliasHandle alias;  // set when found
    };

    KnownWorldSearches() = default;
    ~KnownWorldSearches();
    KnownWorldSearches(const KnownWorldSearches&) = delete;
    KnownWorldSearches& operator=(const KnownWorldSearches&) = delete;

    // [main] True while a batch is being searched or its findings have not all been taken.
    bool busy() const;
    // [main] Starts searching for `requests`; ignored while busy().
    void start(std::vector<Request> requests);
    // [main] The findings made since the last call, in no set order.
    std::vector<Finding> takeFindings();
    // [main] Waits until the batch is finished (benchmarks and tests; the application never waits).
    void waitUntilFinished();

  private:
    void search(std::vector<Request> requests);  // [search thread]
    void join();

    std::thread thread_;
    std::atomic<bool> stopping_{false};
    std::atomic<bool> running_{false};
    mutable std::mutex mutex_;  // guards findings_
    std::vector<Finding> findings_;
};

}  // namespace sylvora
