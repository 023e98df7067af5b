#include "align/scan/scan.h"

#include <algorithm>

#include "align/scan/local_kernel.h"
#include "align/scan/scan_reference.h"
#include "driver/search_mode.h"

namespace zelvan {
namespace {

InstructionSet run_local_kernel(InstructionSet set, const KernelCall& call) {
  switch (set) {
    case InstructionSet::PORTABLE:
      return run_local_kernel_portable(call);
#if defined(__x86_64__)
    case InstructionSet::SSE41:
      return run_local_kernel_sse41(call);
    case InstructionSet::AVX2:
      return run_local_kernel_avx2(call);
    case InstructionSet::AVX512:
      return run_local_kernel_avx512(call);
    case InstructionSet::AVX512VBMI:
      return run_local_kernel_avx512vbmi(call);
#elif defined(__aarch64__)
    case InstructionSet::NEON:
      return run_local_kernel_neon(call);
#endif
    default:
      return InstructionSet::REFERENCE;
  }
}

int32_t reference_score(int32_t qlen, const int8_t* codes, int32_t dlen, const LookupTable& table,
                        const ScoreMatrix& matrix, const SearchMode& mode, const Params* p) {
  if (mode.gaps_by_position) {
    return (mode.affine ? swliv : swlv)(qlen, codes, dlen, table, matrix, p);
  }
  if (mode.affine) return swli(qlen, codes, dlen, table, p->LD_PEN, p->LI_PEN);
  return swl(qlen, codes, dlen, table, p->LD_PEN);
}

bool all_equal(const UTvector<int32_t>& values) {
  return std::all_of(values.begin(), values.end(), [&](int32_t value) { return value == values.front(); });
}

ScanScores scan_scores(int32_t qlen, const LookupTable& table, const ScoreMatrix& matrix,
                       const SearchMode& mode, const Params* p) {
  const auto penalties = [&](int32_t uniform, char gap_row) {
    if (!mode.gaps_by_position) return UTvector<int32_t>(static_cast<std::size_t>(qlen - 2), uniform);
    const int32_t* row = table[residue_code(matrix, gap_row)];
    return UTvector<int32_t>(row, row + qlen - 2);
  };
  ScanScores scores;
  scores.recurrence = LOCAL_RECURRENCE;
  scores.table = &table;
  scores.positions = qlen - 2;
  scores.extend = penalties(p->LD_PEN, p->GAP_CHARACTER);
  if (mode.affine) scores.open = penalties(p->LI_PEN, p->IGAP_CHARACTER);
  scores.uniform = all_equal(scores.extend) && all_equal(scores.open);
  return scores;
}

}  // namespace

ScanTally scan_database_by(InstructionSet set, LaneWidth first, int32_t qlen, const ScanTargets& targets,
                           const LookupTable& table, const ScoreMatrix& matrix, int32_t* out_scores,
                           const Params* p) {
  const SearchMode mode = decode_mode(p->MODE);
  if (mode.comparison != Comparison::PROTEINS) return {};
  ScanTally tally;
  ScanMeter meter = start_scan_meter(qlen - 2, targets.seqs, targets.n, p);
  if (set == InstructionSet::REFERENCE || qlen <= 2 || table.rows >= ROW_CODES) {
    UTvector<int8_t> room;
    for (int32_t k = 0; k < targets.n; ++k) {
      const SeqRec& target = targets.seqs[k];
      out_scores[k] =
          reference_score(qlen, codes_of(targets, target, room), target.len, table, matrix, mode, p);
      scanned(meter, target);
      show_scan_meter(meter);
    }
  } else {
    tally = scan_sequences(scan_scores(qlen, table, matrix, mode, p), targets, out_scores, set, first,
                           run_local_kernel, meter);
  }
  end_scan_meter(meter);
  return tally;
}

void scan_database(int32_t qlen, const ScanTargets& targets, const LookupTable& table,
                   const ScoreMatrix& matrix, int32_t* out_scores, const Params* p) {
  scan_database_by(best_instruction_set(), LaneWidth::BITS8, qlen, targets, table, matrix, out_scores, p);
}

}  // namespace zelvan
