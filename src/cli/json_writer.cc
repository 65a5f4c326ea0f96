#include "cli/json_writer.h"

#include <cstdio>

namespace pairwell {

namespace {

// The length of the well-formed UTF-8 sequence at text[i], or 0: overlong
// forms, surrogates and codes above U+10FFFF are not well formed.
std::size_t Utf8SequenceLength(std::string_view text, std::size_t i) {
  const auto byte = [&](std::size_t k) {
    return k < text.size() ? static_cast<unsigned char>(text[k]) : 0u;
  };
  const unsigned lead = byte(i);
  const auto continuation = [&](std::size_t k, unsigned low = 0x80,
                                unsigned high = 0xBF) {
    return byte(k) >= low && byte(k) <= high;
  };
  if (lead < 0x80) return 1;
  if (lead >= 0xC2 && lead <= 0xDF) return continuation(i + 1) ? 2 : 0;
  if (lead >= 0xE0 && lead <= 0xEF) {
    const unsigned low = lead == 0xE0 ? 0xA0 : 0x80;
    const unsigned high = lead == 0xED ? 0x9F : 0xBF;
    return continuation(i + 1, low, high) && continuation(i + 2) ? 3 : 0;
  }
  if (lead >= 0xF0 && lead <= 0xF4) {
    const unsigned low = lead == 0xF0 ? 0x90 : 0x80;
    const unsigned high = lead == 0xF4 ? 0x8F : 0xBF;
    return continuation(i + 1, low, high) && continuation(i + 2) &&
                   continuation(i + 3)
               ? 4
               : 0;
  }
  return 0;
}

}  // namespace

void JsonWriter::BeforeValue() {
  if (after_key_) {
    after_key_ = false;
    return;
  }
  if (!has_value_.empty()) {
    if (has_value_.back()) out_->Append(',');
    has_value_.back() = true;
  }
}

void JsonWriter::Quote(std::string_view value) {
  out_->Append('"');
  // Plain characters are written in runs; only the others one by one.
  std::size_t plain_from = 0;
  const auto write_plain = [&](std::size_t up_to) {
    if (up_to > plain_from)
      out_->Append(value.data() + plain_from, up_to - plain_from);
  };
  for (std::size_t i = 0; i < value.size();) {
    const unsigned char c = static_cast<unsigned char>(value[i]);
    if (c >= 0x20 && c < 0x80 && c != '"' && c != '\\') {
      ++i;
      continue;
    }
    write_plain(i);
    const std::size_t length = Utf8SequenceLength(value, i);
    char escape[8];
    if (length == 0) {
      std::snprintf(escape, sizeof escape, "\\udc%02x", c);
      out_->Append(escape);
      ++i;
    } else if (length > 1) {
      out_->Append(value.data() + i, length);
      i += length;
    } else {
      ++i;
      switch (c) {
        case '"':
          out_->Append("\\\"");
          break;
        case '\\':
          out_->Append("\\\\");
          break;
        case '\n':
          out_->Append("\\n");
          break;
        case '\r':
          out_->Append("\\r");
          break;
        case '\t':
          out_->Append("\\t");
          break;
        default:
          std::snprintf(escape, sizeof escape, "\\u%04x", c);
          out_->Append(escape);
      }
    }
    plain_from = i;
  }
  write_plain(value.size());
  out_->Append('"');
}

JsonWriter& JsonWriter::BeginObject() {
  BeforeValue();
  out_->Append('{');
  has_value_.push_back(false);
  return *this;
}

JsonWriter& JsonWriter::EndObject() {
  has_value_.pop_back();
  out_->Append('}');
  return *this;
}

JsonWriter& JsonWriter::BeginArray() {
  BeforeValue();
  out_->Append('[');
  has_value_.push_back(false);
  return *this;
}

JsonWriter& JsonWriter::EndArray() {
  has_value_.pop_back();
  out_->Append(']');
  return *this;
}

JsonWriter& JsonWriter::Key(std::string_view key) {
  BeforeValue();
  Quote(key);
  out_->Append(':');
  after_key_ = true;
  return *this;
}

JsonWriter& JsonWriter::String(std::string_view value) {
  BeforeValue();
  Quote(value);
  return *this;
}

JsonWriter& JsonWriter::Number(std::int64_t value) {
  BeforeValue();
  out_->Append(std::to_string(value));
  return *this;
}

JsonWriter& JsonWriter::Bool(bool value) {
  BeforeValue();
  out_->Append(value ? "true" : "false");
  return *this;
}

JsonWriter& JsonWriter::Null() {
  BeforeValue();
  out_->Append("null");
  return *this;
}

}  // namespace pairwell
