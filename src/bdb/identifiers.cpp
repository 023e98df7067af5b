#include "bdb/identifiers.h"

#include <algorithm>
#include <cstring>

#include "util/failure.h"
#include "util/index_sort.h"
#include "util/line_reader.h"
#include "util/sorted_search.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

bool holds(const UTvector<char>& line, const char* text) {
  return std::strstr(line.data(), text) != nullptr;
}

// The word (counted from 0) of one line of the list that is the identifier.
UTstring identifier_of(const UTvector<char>& line, std::size_t word) {
  TokenList words;
  UTgettokens(" \n", line.data(), words);
  if (words.tokens.size() <= word) {
    UTend_input(std_err,
                "A line of the score list has no word %zu, the identifier:\n%s\n"
                "The list must have been written with SHOW_TITLES 1\n",
                word + 1, line.data());
  }
  return words.tokens[word];
}

}  // namespace

UTvector<UTstring> ReadIdListFromScanFile(FILE* stream, Params* p) {
  UTvector<char> line = UTlinebuffer(static_cast<std::size_t>(p->LINE_BUFFER_LEN), "ReadIdListFromScanFile");
  std::size_t word = 2;
  for (;;) {
    if (!UTgetline(stream, line)) UTend_input(p->STDERR, "No # Start_Scores in file\n");
    if (holds(line, "# Start_Scores")) break;
    if (holds(line, "# FIT")) word = 4;
  }
  UTvector<UTstring> ids;
  for (int32_t read = 0; read < p->EXTRACT_SEQ; ++read) {
    if (!UTgetline(stream, line)) UTend_input(p->STDERR, "No # End_Scores in file\n");
    if (holds(line, "# End_Scores")) {
      p->EXTRACT_SEQ = static_cast<int32_t>(ids.size()) - 1;
      break;
    }
    ids.push_back(identifier_of(line, word));
  }
  if (!ids.empty()) ids.pop_back();
  return ids;
}

void shsort(int32_t n, SeqRec* seqs) {
  const UTvector<int32_t> order =
      UTsorted_order(n, [seqs](int32_t a, int32_t b) { return std::strcmp(seqs[a].id, seqs[b].id) < 0; });
  const UTvector<SeqRec> unsorted(seqs, seqs + n);
  std::transform(order.begin(), order.end(), seqs,
                 [&unsorted](int32_t number) { return unsorted[static_cast<std::size_t>(number)]; });
}

const SeqRec* findid(const SeqRec* seqs, int32_t n, const char* id) {
  const int32_t k = UTfind_sorted(n, [=](int32_t at) { return std::strcmp(id, seqs[at].id); });
  return k >= 0 ? &seqs[k] : nullptr;
}

}  // namespace zelvan
