#include "driver/gap_defaults.h"

#include "driver/config_file.h"
#include "driver/key_table.h"
#include "driver/search_mode.h"
#include "util/streams.h"
#include "util/text.h"

namespace zelvan {
namespace {

constexpr int32_t FIELDS = 6;  // mode, matrix and four penalties

bool read_entry(const char* line, int32_t precision, GapDefault& out_entry) {
  TokenList fields;
  if (!UTgettokens(":\n", line, fields) || fields.count < FIELDS) return false;
  const auto penalty = [&](std::size_t k) { return scaled_value(fields.tokens[k].c_str(), precision); };
  out_entry.mode = integer_value(fields.tokens[0].c_str());
  out_entry.matrix = fields.tokens[1];
  out_entry.ld_pen = penalty(2);
  out_entry.li_pen = penalty(3);
  out_entry.fs_pen = penalty(4);
  out_entry.fse_pen = penalty(5);
  return true;
}

// The mode under which the penalties of a search are listed.
int32_t mode_family(int32_t mode) {
  const SearchMode decoded = decode_mode(mode);
  if (decoded.comparison != Comparison::PROTEINS) return mode;
  return decoded.affine ? 2 : 0;
}

}  // namespace

bool GetGaps(const char* path, Params* p) {
  if (p->VERBOSE > 50) std::fputs("###Now in GetGaps \n", std_err);
  p->SUCCESS = -1;
  p->GAPDEFS.clear();
  p->NGAPDEFS = 0;
  ConfigFile file;
  if (!open_config(file, path, "getgaps", p)) {
    report_config(file, "Error opening gapdefs file");
    return false;
  }
  if (p->VERBOSE > 50) std::fputs("Allocating gaps array structure \n", std_err);
  bool well_formed = true;
  while (well_formed && next_line(file) && file.text[0] != '\n') {
    if (file.text[0] == '#') continue;
    GapDefault entry;
    well_formed = static_cast<int32_t>(p->GAPDEFS.size()) < p->GAPDEFS_CAPACITY &&
                  read_entry(file.text.data(), p->PRECISION, entry);
    if (well_formed) {
      p->GAPDEFS.push_back(entry);
    } else {
      report_malformed(file, "Error decoding gap penalties");
    }
  }
  const bool read_whole = close_config(file);
  if (!well_formed || !read_whole) {
    p->GAPDEFS.clear();
    return false;
  }
  p->NGAPDEFS = static_cast<int32_t>(p->GAPDEFS.size());
  p->SUCCESS = 1;
  return true;
}

void setgapdefs(Params* p) {
  if (p->USE_GAPDEFS != 1) return;
  const int32_t family = mode_family(p->MODE);
  for (const GapDefault& entry : p->GAPDEFS) {
    if (entry.mode != family || entry.matrix != p->MATRIX_FILE.name) continue;
    p->LD_PEN = entry.ld_pen;
    p->LI_PEN = entry.li_pen;
    p->FS_PEN = entry.fs_pen;
    p->FSE_PEN = entry.fse_pen;
    return;
  }
}

}  // namespace zelvan
