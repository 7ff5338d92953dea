#pragma once

// Owner of one open POSIX file descriptor, closed when the owner goes away.

namespace sylvora {

class UniqueFd {
  public:
    UniqueFd() = default;
    explicit UniqueFd(int fd) : fd_(fd) {}
    ~UniqueFd();
    UniqueFd(const UniqueFd&) = delete;
    UniqueFd& operator=(const UniqueFd&) = delete;
    UniqueFd(UniqueFd&& other) noexcept : fd_(other.release()) {}
    UniqueFd& operator=(UniqueFd&& other) noexcept;

    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }
    int release() {
        const int fd = fd_;
        fd_ = -1;
        return fd;
    }
    // Closes now and reports what close(2) said (0 or an errno value): the last write errors of some
    // file systems only show up here.
    int close();

  private:
    int fd_ = -1;
};

}  // namespace sylvora
