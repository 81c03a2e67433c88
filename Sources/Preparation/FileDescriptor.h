#pragma once

#include <unistd.h>

#include <utility>

namespace velmora {

/// Owns one file descriptor; -1 is none.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int number) : number_(number) {}
    FileDescriptor(FileDescriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
    FileDescriptor& operator=(FileDescriptor&& other) noexcept {
        std::swap(number_, other.number_);
        return *this;
    }
    ~FileDescriptor() { close(); }

    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] bool isOpen() const { return number_ >= 0; }
    void close() {
        if (isOpen()) ::close(std::exchange(number_, -1));
    }

  private:
    int number_ = -1;
};

}  // namespace velmora
