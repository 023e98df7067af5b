#include "report/iteration_changes.h"

#include <algorithm>

#include "util/failure.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

using HitList = UTvector<IterHit>;

constexpr int32_t NO_MATCH = -1;
constexpr int32_t ENTERED_TITLE_WIDTH = 50;

int32_t highest_seqno(const HitList& hits) {
  int32_t highest = -1;
  for (const IterHit& hit : hits) highest = std::max(highest, hit.seqno);
  return highest;
}

void pair_lists(HitList& previous, HitList& current) {
  // Where each sequence first stands in the current list.
  UTvector<int32_t> position(static_cast<std::size_t>(highest_seqno(current)) + 1, NO_MATCH);
  for (std::size_t k = current.size(); k-- > 0;) {
    position[static_cast<std::size_t>(current[k].seqno)] = static_cast<int32_t>(k);
  }
  for (std::size_t k = 0; k < previous.size(); ++k) {
    const auto seqno = static_cast<std::size_t>(previous[k].seqno);
    previous[k].match = seqno < position.size() ? position[seqno] : NO_MATCH;
    if (previous[k].match != NO_MATCH) {
      current[static_cast<std::size_t>(previous[k].match)].match = static_cast<int32_t>(k);
    }
  }
}

// The two reports lay out identifier and title differently on purpose.
void print_names_of_lost(FILE* stream, const SeqRec& seq, const Params* p) {
  UTpTITLEstring(stream, seq.id, p->SHOW_IDENT_WIDTH, seq.ilen);
  std::fputc(' ', stream);
  if (p->SHOW_TITLES != 0) UTpTITLEstring(stream, seq.title, p->SHOW_TITLES_WIDTH, seq.tlen);
}

void print_names_of_entered(FILE* stream, const SeqRec& seq, const Params* p) {
  std::fprintf(stream, "%s ", seq.id);
  if (p->SHOW_TITLES != 0) UTpstring(stream, seq.title, ENTERED_TITLE_WIDTH);
}

// Returns the lines written.
template <class PrintNames>
int32_t print_unmatched(const HitList& hits, const SeqRec* seqs, FILE* stream, PrintNames print_names,
                        const Params* p) {
  int32_t lines = 0;
  int32_t rank = 0;
  for (const IterHit& hit : hits) {
    ++rank;
    if (hit.match != NO_MATCH) continue;
    if (p->SHOW_TITLES != 0) std::fprintf(stream, "%4d ", rank);
    std::fprintf(stream, "%4d %-6.2f %-8.3g ", whole_score(hit.score, p), hit.x, hit.significance);
    print_names(stream, seqs[hit.seqno], p);
    std::fputc('\n', stream);
    ++lines;
  }
  return lines;
}

}  // namespace

void iter_hist(IterHistory& history, const ResultRec& results, int32_t iteration, int32_t count,
               const Params* p) {
  // Unsigned, so that NITER 0 sets no limit.
  if (static_cast<uint32_t>(iteration) > static_cast<uint32_t>(p->NITER) - 1) {
    error("Strange error in iter_hist - iteration exceeds max allowed", 0);
    UTend_fault(std_err, "it = %d, p->NITER = %d\n", iteration, p->NITER);
  }
  const auto slot = static_cast<std::size_t>(iteration);
  if (history.size() <= slot) history.resize(slot + 1);
  HitList& hits = history[slot];
  hits.clear();
  hits.reserve(static_cast<std::size_t>(count));
  for (int32_t k = 0; k < count; ++k) {
    const int32_t seqno = results.order[results.n - 1 - k];
    hits.push_back(
        {seqno, results.scores[seqno], results.standardised[seqno], results.significance[seqno], NO_MATCH});
  }
}

int32_t print_changes(IterHistory& history, const SeqRec* seqs, int32_t iteration, FILE* stream,
                      const Params* p) {
  if (iteration == 0) return -1;
  HitList& previous = history[static_cast<std::size_t>(iteration) - 1];
  HitList& current = history[static_cast<std::size_t>(iteration)];
  pair_lists(previous, current);

  std::fprintf(stream, "#\n# Reported in iteration %d but below the threshold in this iteration (%d)\n#\n",
               iteration - 1, iteration);
  int32_t lines = print_unmatched(previous, seqs, stream, print_names_of_lost, p);
  std::fprintf(stream, "# Reported in this iteration (%d) but not in the previous iteration (%d)\n#\n",
               iteration, iteration - 1);
  lines += print_unmatched(current, seqs, stream, print_names_of_entered, p);
  return lines;
}

}  // namespace zelvan
