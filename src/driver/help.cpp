#include "driver/help.h"

#include "util/failure.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr int32_t RULE_WIDTH = 69;

void write_title(FILE* stream, const char* version) {
  UTpline(stream, '-', RULE_WIDTH);
  std::fprintf(stream, "ZELVAN Version: %s", version);
  std::fprintf(stream, "%s\n", CREDIT_LINES[0]);
  UTpline(stream, '-', RULE_WIDTH);
}

}  // namespace

void ZELVAN_PrintOptions(FILE* stream, const AliasTable&, const char* version) {
  write_title(stream, version);
  ZELVAN_BriefHelp(stream, 0);
  write_title(stream, version);
  UTend_input(stream, "%s", "");
}

void ZELVAN_BriefHelp(FILE* stream, int32_t flag) {
  if (flag != 0) return;
  std::fputs(
      "See zelvan_manual for FULL information.\n"
      "Normal scans:\n"
      "MODE  200:  Protein vs protein with iteration and simple gaps.\n"
      "MODE  202:  Protein vs protein with iteration and affine gaps.\n"
      "\nExperimental methods:\n"
      "MODE  210:  Protein vs protein with iteration and variable simple gaps.\n"
      "MODE  212:  Protein vs protein with iteration and variable affine gaps.\n"
      "\n"
      "MODE 99:  Build a zelvan database - see zelvan_manual.\n"
      "\n"
      "Assuming ZELVAN has been installed correctly, the following should work...\n\n"
      "MODE 200 scan with FASTA format file query.seq against SwissProt\n"
      "zelvan -s query.seq -qseq_format 1 -bdb swissprot > logfile\n"
      "\n"
      "To scan a fasta format database in any mode change -bdb swissprot to:\n"
      "-d swissprot.fa -db_format 1\n"
      "\n"
      "Common options - for full list, see zelvan_manual\n"
      "Change pairscore matrix from default to another matrix, e.g. PAM100\n"
      "Add:  -m PAM100 to command line\n"
      "Change gap penalties - e.g. to length dependent of 9 and creation of 13 \n"
      "Add:  -ugd 0 -ld_pen 9 -li_pen 13\n"
      "\n",
      stream);
}

}  // namespace zelvan
