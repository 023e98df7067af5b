#include "dna/frame_scan.h"

#include "dna/frame_kernel.h"
#include "dna/frame_shift_reference.h"
#include "driver/search_mode.h"

namespace zelvan {
namespace {

template <Translated SIDE>
InstructionSet run_frame_kernel(InstructionSet set, const KernelCall& call) {
  switch (set) {
    case InstructionSet::PORTABLE:
      return run_frame_kernel_portable(SIDE, call);
#if defined(__x86_64__)
    case InstructionSet::SSE41:
      return run_frame_kernel_sse41(SIDE, call);
    case InstructionSet::AVX2:
      return run_frame_kernel_avx2(SIDE, call);
    case InstructionSet::AVX512:
    case InstructionSet::AVX512VBMI:
      return run_frame_kernel_avx512(SIDE, call);
#elif defined(__aarch64__)
    case InstructionSet::NEON:
      return run_frame_kernel_neon(SIDE, call);
#endif
    default:
      return InstructionSet::REFERENCE;
  }
}

int32_t reference_score(int32_t qlen, const int8_t* codes, int32_t dlen, const LookupTable& table,
                        const SearchMode& mode, const Params* p) {
  if (!mode.affine) return npswl(qlen, codes, dlen, table, p->LD_PEN, p->FS_PEN);
  return (mode.comparison == Comparison::TRANSLATED_QUERY ? npswli2 : nswli)(qlen, codes, dlen, table,
                                                                             p->LD_PEN, p->LI_PEN, p->FS_PEN);
}

ScanScores frame_scores(int32_t qlen, const LookupTable& table, const SearchMode& mode, const Params* p) {
  const auto positions = static_cast<std::size_t>(qlen - 2);
  ScanScores scores;
  scores.recurrence = mode.comparison == Comparison::TRANSLATED_QUERY ? TRANSLATED_QUERY_RECURRENCE
                                                                      : TRANSLATED_TARGET_RECURRENCE;
  scores.table = &table;
  scores.positions = qlen - 2;
  scores.extend.assign(positions, p->LD_PEN);
  if (mode.affine) scores.open.assign(positions, p->LI_PEN);
  scores.shift = p->FS_PEN;
  return scores;
}

}  // namespace

ScanTally scan_frames_by(InstructionSet set, LaneWidth first, int32_t qlen, const ScanTargets& targets,
                         const LookupTable& table, int32_t* out_scores, const Params* p) {
  const SearchMode mode = decode_mode(p->MODE);
  if (mode.comparison != Comparison::TRANSLATED_TARGETS && mode.comparison != Comparison::TRANSLATED_QUERY) {
    return {};
  }
  ScanTally tally;
  ScanMeter meter = start_scan_meter(qlen - 2, targets.seqs, targets.n, p);
  const bool any_negative = p->LD_PEN < 0 || p->LI_PEN < 0 || p->FS_PEN < 0;
  if (set == InstructionSet::REFERENCE || qlen <= 2 || any_negative || table.rows >= ROW_CODES) {
    UTvector<int8_t> room;
    for (int32_t k = 0; k < targets.n; ++k) {
      const SeqRec& target = targets.seqs[k];
      out_scores[k] = reference_score(qlen, codes_of(targets, target, room), target.len, table, mode, p);
      scanned(meter, target);
      show_scan_meter(meter);
    }
  } else {
    const RunKernel run_kernel = mode.comparison == Comparison::TRANSLATED_QUERY
                                     ? run_frame_kernel<Translated::QUERY>
                                     : run_frame_kernel<Translated::TARGET>;
    tally = scan_sequences(frame_scores(qlen, table, mode, p), targets, out_scores, set, first, run_kernel,
                           meter);
  }
  end_scan_meter(meter);
  return tally;
}

void scan_frames(int32_t qlen, const ScanTargets& targets, const LookupTable& table, int32_t* out_scores,
                 const Params* p) {
  scan_frames_by(best_instruction_set(), LaneWidth::BITS8, qlen, targets, table, out_scores, p);
}

}  // namespace zelvan
