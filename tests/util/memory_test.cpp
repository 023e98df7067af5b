#include "util/memory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <new>

namespace zelvan {

// A request that cannot be met must reach the checks under the address sanitizer, too.
extern "C" const char* __asan_default_options();
extern "C" const char* __asan_default_options() {
  return "allocator_may_return_null=1";
}

namespace {

// Hidden from the compiler, which warns about sizes that it can see to be impossible.
volatile std::size_t impossible = SIZE_MAX / 2;

TEST(MemoryDeathTest, ExhaustionEndsTheRunWithStatusZero) {
  using testing::ExitedWithCode;
  EXPECT_TRUE(UThaveroom(1 << 20));
  EXPECT_FALSE(UThaveroom(impossible));
  EXPECT_EXIT(UTmalloc(impossible), ExitedWithCode(0), "malloc error: Cannot allocate memory\n");
  EXPECT_EXIT(UTrealloc(nullptr, impossible), ExitedWithCode(0), "realloc error: Cannot allocate memory\n");
  EXPECT_EXIT(UTfree(nullptr), ExitedWithCode(0), "Attempt to free NULL pointer: ");
  EXPECT_EXIT(UTvector<char>(impossible - 1), ExitedWithCode(0), "malloc error: ");
  EXPECT_EXIT(UTallocator<int64_t>().allocate(impossible), ExitedWithCode(0), "malloc error: ");
  EXPECT_EXIT(static_cast<void>(::operator new(impossible)), ExitedWithCode(0), "malloc error: ");
}

}  // namespace
}  // namespace zelvan
