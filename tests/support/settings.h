// Settings as a configuration file would give them.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <string_view>

#include "driver/key_table.h"

namespace zelvan {

// set_keys - sets keys from "KEY value KEY value ...", in that order; penalties and scores are in matrix units.
inline void set_keys(Params& p, const std::string& settings) {
  std::istringstream words(settings);
  for (std::string name, value; words >> name >> value;) {
    bool known = false;
    for (const KeyEntry& key : parameter_keys()) {
      if (key.name != std::string_view(name)) continue;
      store_value(key, value.c_str(), "set_keys", &p);
      known = true;
      break;
    }
    EXPECT_TRUE(known) << name;
  }
}

inline Params params_of(const std::string& settings) {
  Params p;
  set_keys(p, settings);
  return p;
}

}  // namespace zelvan
