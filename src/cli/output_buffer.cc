#include "cli/output_buffer.h"

#include <cerrno>

namespace pairwell {

OutputBuffer::OutputBuffer(std::FILE* stream) : stream_(stream) {
  if (stream_ != nullptr) text_.reserve(kFlushSize + 4096);
}

void OutputBuffer::Drain() {
  if (stream_ == nullptr) return;
  if (error_number_ == 0 &&
      std::fwrite(text_.data(), 1, text_.size(), stream_) != text_.size()) {
    error_number_ = errno != 0 ? errno : EIO;
  }
  text_.clear();
}

bool OutputBuffer::Flush() {
  Drain();
  if (stream_ != nullptr && std::fflush(stream_) != 0 && error_number_ == 0) {
    error_number_ = errno != 0 ? errno : EIO;
  }
  return error_number_ == 0;
}

}  // namespace pairwell
