#include "util/line_reader.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/capture.h"

namespace {

std::vector<std::string> lines_of(std::string_view content, std::size_t buffer_size) {
  FILE* stream = std::tmpfile();
  std::fwrite(content.data(), 1, content.size(), stream);
  std::rewind(stream);
  UTvector<char> buffer = UTlinebuffer(buffer_size, "test");
  std::vector<std::string> lines;
  while (UTgetline(stream, buffer)) lines.emplace_back(buffer.data());
  EXPECT_STREQ(buffer.data(), "");
  EXPECT_EQ(buffer.size(), buffer_size);
  EXPECT_EQ(std::ferror(stream), 0);
  std::fclose(stream);
  return lines;
}

TEST(LineReader, DeliversLinesWithTheirNewline) {
  using namespace std::string_view_literals;
  const struct {
    std::string_view content;
    std::size_t buffer_size;
    std::vector<std::string> lines;
  } cases[] = {{"", 80, {}},
               {"MODE 202\n\n#\nlast line open", 80, {"MODE 202\n", "\n", "#\n", "last line open"}},
               {"a\rb\r\r\n\r\nX\r", 80, {"a\rb\r\n", "\n", "X\n"}},
               {"M\0\x44\0\n\0"sv, 80, {"M\x1a\x44\x1a\n", "\x1a"}},
               {"abcdefg\nhi\n", 4, {"abc", "def", "g\n", "hi\n"}},
               {"abc\r\nd", 4, {"abc", "\n", "d"}}};
  for (const auto& c : cases) EXPECT_EQ(lines_of(c.content, c.buffer_size), c.lines) << c.content;
}

TEST(LineReaderDeathTest, MissingBufferEndsTheRun) {
  volatile std::size_t impossible = SIZE_MAX / 2;
  EXPECT_EXIT(UTlinebuffer(impossible, "getpars"), testing::ExitedWithCode(255),
              "No Space for buff in getpars: Cannot allocate memory\n$");
}

}  // namespace
