// A small writer of JSON text, enough for the command line's reports.
#ifndef PAIRWELL_CLI_JSON_WRITER_H_
#define PAIRWELL_CLI_JSON_WRITER_H_

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "cli/output_buffer.h"

namespace pairwell {

// Values are written in the order they are given; Key() precedes each value
// inside an object. Nesting errors are the caller's (nothing is checked).
// The text is always valid UTF-8: a string byte that is not part of a UTF-8
// sequence (file names are bytes) is written as the escape of U+DC00 plus
// the byte, "\udc80".."\udcff". No real character has such a code, so the
// bytes can be told apart and restored (Python: json.loads, then
// encode("utf-8", "surrogateescape")).
class JsonWriter {
 public:
  // Writes into `out` (not owned), or into a buffer of its own whose text()
  // holds the whole document.
  explicit JsonWriter(OutputBuffer* out = nullptr)
      : out_(out != nullptr ? out : &own_) {}
  JsonWriter(const JsonWriter&) = delete;
  JsonWriter& operator=(const JsonWriter&) = delete;

  JsonWriter& BeginObject();
  JsonWriter& EndObject();
  JsonWriter& BeginArray();
  JsonWriter& EndArray();
  JsonWriter& Key(std::string_view key);
  JsonWriter& String(std::string_view value);
  JsonWriter& Number(std::int64_t value);
  JsonWriter& Bool(bool value);
  JsonWriter& Null();

  // The document so far, when the writer has its own buffer.
  const std::string& text() const { return own_.text(); }

 private:
  void BeforeValue();
  void Quote(std::string_view value);

  OutputBuffer own_;
  OutputBuffer* out_;
  // Per open container: whether it holds a value already.
  std::vector<bool> has_value_;
  bool after_key_ = false;
};

}  // namespace pairwell

#endif  // PAIRWELL_CLI_JSON_WRITER_H_
