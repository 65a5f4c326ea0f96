#include "cli/output_buffer.h"

#include "util/terminal.h"

namespace pairwell {

OutputBuffer::OutputBuffer(std::FILE* stream) : stream_(stream) {
  if (stream_ != nullptr) text_.reserve(kFlushSize + 4096);
}

void OutputBuffer::Drain() {
  if (stream_ == nullptr) return;
  if (error_number_ == 0) {
    error_number_ = WriteStream(stream_, text_.data(), text_.size());
  }
  text_.clear();
}

bool OutputBuffer::Flush() {
  Drain();
  if (stream_ != nullptr && error_number_ == 0) {
    error_number_ = FlushStream(stream_);
  }
  return error_number_ == 0;
}

}  // namespace pairwell
