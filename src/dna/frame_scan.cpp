#include "dna/frame_scan.h"

#include "dna/frame_shift_reference.h"

namespace zelvan {
namespace {

// In mode 10 the last two positions, which begin no whole codon, are never rows.
int32_t row_length(const SeqRec& s, const Params* p) {
  return p->MODE == 10 ? s.len - 2 : s.len;
}

int32_t reference_score(int32_t m, const SeqRec& s, const LookupTable& table, const Params* p) {
  const int32_t n = row_length(s, p);
  switch (p->MODE) {
    case 20:
      return npswl(m, s.seq, n, table, p->LD_PEN, p->FS_PEN);
    case 22:
      return npswli2(m, s.seq, n, table, p->LD_PEN, p->LI_PEN, p->FS_PEN);
    default:
      return nswli(m, s.seq, n, table, p->LD_PEN, p->LI_PEN, p->FS_PEN);
  }
}

ScanScores frame_scores(int32_t m, const LookupTable& table, const Params* p) {
  const auto positions = static_cast<std::size_t>(m - 2);
  ScanScores scores;
  scores.recurrence =
      p->MODE == 10 || p->MODE == 12 ? Recurrence::TRANSLATED_TARGET : Recurrence::TRANSLATED_QUERY;
  scores.table = &table;
  scores.positions = m - 2;
  scores.extend.assign(positions, p->LD_PEN);
  if (p->MODE != 20) scores.open.assign(positions, p->LI_PEN);
  scores.shift = p->FS_PEN;
  return scores;
}

}  // namespace

ScanTally scan_frames_by(InstructionSet set, LaneWidth first, int32_t m, const SeqRec* seqs, int32_t n,
                         const LookupTable& table, int32_t* out_scores, const Params* p) {
  if (p->MODE != 10 && p->MODE != 12 && p->MODE != 20 && p->MODE != 22) return {};
  ScanTally tally;
  ScanMeter meter = start_scan_meter(m - 2, seqs, n, p);
  const bool any_negative = p->LD_PEN < 0 || p->LI_PEN < 0 || p->FS_PEN < 0;
  if (set == InstructionSet::REFERENCE || m <= 2 || any_negative || table.rows >= ROW_CODES) {
    for (int32_t k = 0; k < n; ++k) {
      out_scores[k] = reference_score(m, seqs[k], table, p);
      scanned(meter, seqs[k]);
      show_scan_meter(meter);
    }
  } else {
    UTvector<SeqRec> rows(seqs, seqs + n);
    for (SeqRec& s : rows) s.len = row_length(s, p);
    tally = scan_sequences(frame_scores(m, table, p), rows.data(), n, out_scores, set, first, meter);
  }
  end_scan_meter(meter);
  return tally;
}

void scan_frames(int32_t m, const SeqRec* seqs, int32_t n, const LookupTable& table, int32_t* out_scores,
                 const Params* p) {
  scan_frames_by(best_instruction_set(), LaneWidth::BITS8, m, seqs, n, table, out_scores, p);
}

}  // namespace zelvan
