#include "align/scan.h"

#include "align/scan_reference.h"

void scan_database(int32_t qlen, const SeqRec* seqs, int32_t n, const LookupTable& table,
                   const ScoreMatrix& matrix, int32_t* out_scores, const Params* p) {
  for (int32_t k = 0; k < n; ++k) {
    const SeqRec& s = seqs[k];
    switch (p->MODE) {
      case 200:
        out_scores[k] = swl(qlen, s.seq, s.len, table, p->LD_PEN);
        break;
      case 202:
        out_scores[k] = swli(qlen, s.seq, s.len, table, p->LD_PEN, p->LI_PEN);
        break;
      case 210:
        out_scores[k] = swlv(qlen, s.seq, s.len, table, matrix, p);
        break;
      case 212:
        out_scores[k] = swliv(qlen, s.seq, s.len, table, matrix, p);
        break;
      default:
        break;
    }
  }
}
