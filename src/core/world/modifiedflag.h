#pragma once

// Whether a world differs from its package on disk, with one listener told of every change to
// what a save would write. Every edit sets the mark, even when it is already set, so the listener
// also hears edits that leave it unchanged (a name typed into an already-modified world).

#include <functional>
#include <utility>

namespace sylvora {

class ModifiedFlag {
public:
    // [main]
    ModifiedFlag& operator=(bool value) {
        const bool changed = value || set_;
        set_ = value;
        if (changed && listener_) {
            listener_();
        }
        return *this;
    }
    operator bool() const { return set_; }  // NOLINT(google-explicit-constructor): read as the bool it stands for

    void setListener(std::function<void()> listener) { listener_ = std::move(listener); }

private:
    bool set_ = false;
    std::function<void()> listener_;
};

}  // namespace sylvora
