#include "driver/volume_names.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "util/text.h"

namespace zelvan {

UTstring database_stem(const UTstring& name) {
  constexpr std::size_t ENDING = 4;
  return name.substr(0, name.size() - std::min(name.size(), ENDING));
}

UTstring volumes_name(const UTstring& index_name) {
  return UTcat({database_stem(index_name), ".volumes"});
}

UTstring volume_name(const UTstring& name, int32_t volume) {
  char digits[16];
  std::snprintf(digits, sizeof digits, ".%02d", volume);
  const UTstring stem = database_stem(name);
  return UTcat({stem, digits, std::string_view(name).substr(stem.size())});
}

}  // namespace zelvan
