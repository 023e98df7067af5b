// The configuration files that come with the program.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <set>

#include "driver/configuration.h"
#include "driver/key_table.h"
#include "util/text.h"

namespace zelvan {
namespace {

TEST(ShippedAliases, NameAndDescribeEveryKey) {
  AliasTable table;
  Params p;
  ASSERT_TRUE(read_aliases(ALIAS_PATH.c_str(), table, &p));
  EXPECT_EQ(table.size(), parameter_keys().size());
  for (const KeyEntry& key : parameter_keys()) {
    UTstring lower = key.name;
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    const auto entry = std::find_if(table.begin(), table.end(),
                                    [&](const AliasEntry& listed) { return listed.name == key.name; });
    ASSERT_NE(entry, table.end()) << key.name << " is missing in the alias file";
    EXPECT_EQ(alias(lower.c_str(), key.name, table), 0) << lower.c_str() << " is missing in the alias file";
    if (key.initial == nullptr || key.initial == UTstring(" ")) continue;
    EXPECT_TRUE(entry->comment.ends_with(UTstring("; default ") + key.initial)) << entry->comment;
    EXPECT_GT(entry->comment.size(), 30U) << "says too little: " << entry->comment;
  }
  std::set<UTstring> words;
  for (const AliasEntry& entry : table) {
    for (const UTstring& word : entry.words)
      EXPECT_TRUE(words.insert(word).second) << word << " is listed twice";
  }
}

TEST(ShippedGapDefaults, SuitEveryMatrixAndMode) {
  Params* p = configured("");
  ASSERT_TRUE(GetGaps((CONFIG_DIR + "zelvan_gapdefs.dat").c_str(), p));
  int32_t entries = 0;
  for (const auto& matrix : std::filesystem::directory_iterator(ZELVAN_SOURCE_DIR "/data/matrices")) {
    p->MATRIX_FILE.name = matrix.path().filename().c_str();
    for (int32_t mode : {0, 2, 10, 12, 20, 22}) {
      p->MODE = mode;
      p->LD_PEN = p->LI_PEN = p->FS_PEN = p->FSE_PEN = -1;
      setgapdefs(p);
      ++entries;
      for (int32_t penalty : {p->LD_PEN, p->LI_PEN, p->FS_PEN, p->FSE_PEN}) {
        EXPECT_GT(penalty, 0) << "no entry for mode " << mode << " and " << p->MATRIX_FILE.name;
      }
      EXPECT_LE(p->LD_PEN, p->LI_PEN)
          << p->MATRIX_FILE.name << ": to open a gap is not cheaper than to extend it";
    }
  }
  EXPECT_EQ(p->NGAPDEFS, entries) << "an entry without a matrix, or one that is listed twice";
}

}  // namespace
}  // namespace zelvan
