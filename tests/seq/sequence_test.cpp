#include "seq/sequence.h"

#include <gtest/gtest.h>

#include <random>

#include "seq_data.h"
#include "util/buffer_sizes.h"

namespace {

SeqRec store(SeqStore& to, const Record& r) {
  return store_sequence(to, r.id.data(), static_cast<int32_t>(r.id.size()), r.title.data(),
                        static_cast<int32_t>(r.title.size()), r.residues.data(),
                        static_cast<int32_t>(r.residues.size()));
}

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
  for (const Record& r : expected) records.push_back(store(to, r));

  std::size_t strings = 0;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_TRUE(texts_of(records[i]) == expected[i]) << i;
    strings += expected[i].id.size() + expected[i].title.size() + expected[i].residues.size();
  }
  EXPECT_GT(to.blocks.size(), 4u);
  std::size_t stored = 0;
  for (const auto& block : to.blocks) stored += block.size();
  EXPECT_EQ(stored, strings + 4 * expected.size());  // the promised overhead

  freeseqs(to);
  EXPECT_EQ(to.blocks.size(), 0u);
}

TEST(StoreSequence, SequencesOfOrdinaryLengthShareBlocks) {
  SeqStore to;
  for (int i = 0; i < 10'000; ++i) store(to, {"id", "title", std::string(350, 'A')});
  EXPECT_EQ(to.blocks.size(), 1u);
}

}  // namespace
