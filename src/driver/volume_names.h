// The names of the files of a set of volumes, from those of a single database.
#pragma once

#include <cstdint>

#include "util/memory.h"

namespace zelvan {

// database_stem - a name without ".bix" or ".bsq".
UTstring database_stem(const UTstring& name);

// volumes_name - of the list of volumes: "db.volumes" for "db.bix".
UTstring volumes_name(const UTstring& index_name);

// volume_name - of a file of a volume: "db.00.bsq" for "db.bsq" and volume 0.
UTstring volume_name(const UTstring& name, int32_t volume);

}  // namespace zelvan
