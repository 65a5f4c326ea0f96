// Text on its way to a stream: gathered into a buffer that is written out
// whenever it holds kFlushSize bytes, so that a long report never sits in
// memory whole. Without a stream the text stays, for tests.
#ifndef PAIRWELL_CLI_OUTPUT_BUFFER_H_
#define PAIRWELL_CLI_OUTPUT_BUFFER_H_

#include <cstdio>
#include <string>
#include <string_view>

namespace pairwell {

class OutputBuffer {
 public:
  static constexpr std::size_t kFlushSize = std::size_t{64} << 10;

  // Writes to `stream` (not owned); null keeps everything in text().
  explicit OutputBuffer(std::FILE* stream = nullptr);
  OutputBuffer(const OutputBuffer&) = delete;
  OutputBuffer& operator=(const OutputBuffer&) = delete;

  void Append(std::string_view text) {
    text_.append(text.data(), text.size());
    if (text_.size() >= kFlushSize) Drain();
  }
  void Append(const char* data, std::size_t size) {
    text_.append(data, size);
    if (text_.size() >= kFlushSize) Drain();
  }
  void Append(char c) {
    text_.push_back(c);
    if (text_.size() >= kFlushSize) Drain();
  }

  // Writes out what is left and flushes the stream; false when any write
  // failed (error_number() tells why).
  bool Flush();
  int error_number() const { return error_number_; }

  // Everything appended, when there is no stream.
  const std::string& text() const { return text_; }

 private:
  void Drain();

  std::FILE* stream_;
  std::string text_;
  int error_number_ = 0;  // of the first failed write
};

}  // namespace pairwell

#endif  // PAIRWELL_CLI_OUTPUT_BUFFER_H_
