#include "dna/frame_scan.h"

#include "dna/frame_shift_reference.h"

void scan_frames(int32_t m, const SeqRec* seqs, int32_t n, const LookupTable& table, int32_t* out_scores,
                 const Params* p) {
  for (int32_t k = 0; k < n; ++k) {
    const SeqRec& s = seqs[k];
    switch (p->MODE) {
      case 10:  // the last two positions begin no whole codon
        out_scores[k] = nswli(m, s.seq, s.len - 2, table, p->LD_PEN, p->LI_PEN, p->FS_PEN);
        break;
      case 12:
        out_scores[k] = nswli(m, s.seq, s.len, table, p->LD_PEN, p->LI_PEN, p->FS_PEN);
        break;
      case 20:
        out_scores[k] = npswl(m, s.seq, s.len, table, p->LD_PEN, p->FS_PEN);
        break;
      case 22:
        out_scores[k] = npswli2(m, s.seq, s.len, table, p->LD_PEN, p->LI_PEN, p->FS_PEN);
        break;
      default:
        break;
    }
  }
}
