#include "cli/output_buffer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>
#include <string>

namespace pairwell {
namespace {

TEST(OutputBufferTest, WithoutAStreamEverythingStays) {
  OutputBuffer out;
  out.Append(std::string(OutputBuffer::kFlushSize, 'a'));
  out.Append('b');
  out.Append("cd", 1);
  EXPECT_EQ(out.text().size(), OutputBuffer::kFlushSize + 2);
  EXPECT_TRUE(out.Flush());
  EXPECT_EQ(out.text().back(), 'c');
}

TEST(OutputBufferTest, TextGoesOutOnceTheBufferIsFull) {
  std::FILE* stream = std::tmpfile();
  ASSERT_NE(stream, nullptr);
  OutputBuffer out(stream);
  out.Append(std::string(100, 'x'));
  EXPECT_EQ(std::ftell(stream), 0);
  out.Append(std::string(OutputBuffer::kFlushSize, 'y'));
  // Written through: the buffer is empty again.
  EXPECT_TRUE(out.text().empty());
  out.Append('z');
  EXPECT_TRUE(out.Flush());
  EXPECT_EQ(std::ftell(stream),
            static_cast<long>(100 + OutputBuffer::kFlushSize + 1));
  std::fclose(stream);
}

TEST(OutputBufferTest, FailedWriteIsReportedWithItsReason) {
  std::FILE* stream = std::fopen("/dev/full", "w");
  if (stream == nullptr) GTEST_SKIP() << "no /dev/full here";
  OutputBuffer out(stream);
  out.Append(std::string(OutputBuffer::kFlushSize * 2, 'x'));
  EXPECT_FALSE(out.Flush());
  EXPECT_EQ(out.error_number(), ENOSPC);
  std::fclose(stream);
}

}  // namespace
}  // namespace pairwell
