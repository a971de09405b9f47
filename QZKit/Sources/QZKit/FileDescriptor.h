#pragma once

#include <unistd.h>

namespace qz {

/// A file descriptor of the system that is closed with its owner; below zero: none.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  ~FileDescriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;

  [[nodiscard]] int get() const { return descriptor_; }
  [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }

 private:
  int descriptor_;
};

}  // namespace qz
