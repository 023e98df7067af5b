// Configuration files for the tests of the configuration.
#pragma once

#include <string>

#include "driver/alias.h"
#include "driver/gap_defaults.h"
#include "driver/params.h"
#include "support/capture.h"

namespace zelvan {

inline const std::string CONFIG_DIR = ZELVAN_SOURCE_DIR "/data/config/";
inline const std::string ALIAS_PATH = CONFIG_DIR + "zelvan_alias.dat";

// configured - the record that a defaults file with this content gives, until the next call; the alias
// file is the shipped one.
inline Params* configured(std::string_view defaults) {
  const TemporaryDirectory work;
  static Params record;
  record = GetPars(work.file("defaults", defaults).c_str(), ALIAS_PATH.c_str());
  return &record;
}

}  // namespace zelvan
