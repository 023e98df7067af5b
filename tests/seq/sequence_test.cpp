#include "seq/sequence.h"

#include <gtest/gtest.h>

#include <random>

#include "seq_data.h"
#include "util/buffer_sizes.h"

namespace {

TEST(StoreSequence, KeepsEveryRecordWhileTheStoreGrows) {
  std::mt19937 random(7);
  SeqStore to;
  std::vector<Record> expected = {{"", "", ""}, {"A", "-", "M"}};
  for (int i = 0; i < 60; ++i) {
    const std::size_t length = i % 20 == 19 ? SEQ_BLOCK_SIZE + random() % 9 : random() % 400'000;
    expected.push_back({std::string(random() % 50, 'i'), std::string(random() % 90, 't'),
                        std::string(length, static_cast<char>('A' + i % 26))});
  }
  std::vector<SeqRec> records;
  for (const Record& r : expected) records.push_back(stored(to, r));
  std::size_t bytes = 4 * expected.size();  // the promised overhead
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_TRUE(texts_of(records[i]) == expected[i]) << i;
    bytes += expected[i].id.size() + expected[i].title.size() + expected[i].residues.size();
  }
  for (const auto& block : to.blocks) bytes -= block.size();
  EXPECT_EQ(bytes, 0u);
  freeseqs(to);
  for (int i = 0; i < 10'000; ++i) stored(to, {"id", "title", std::string(350, 'A')});
  EXPECT_EQ(to.blocks.size(), 1u) << "sequences of ordinary length share blocks";
}

}  // namespace
