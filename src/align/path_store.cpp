#include "align/path_store.h"

#include "util/failure.h"

namespace {

// Heap sort on `best`, highest first.
void hsort(UTvector<PathRec>& paths) {
  if (paths.size() < 2) return;
  PathRec* ra = paths.data() - 1;  // 1-based
  std::size_t l = paths.size() / 2 + 1;
  std::size_t ir = paths.size();
  for (;;) {
    PathRec held;
    if (l > 1) {
      held = ra[--l];
    } else {
      held = ra[ir];
      ra[ir] = ra[1];
      if (--ir == 1) {
        ra[1] = held;
        return;
      }
    }
    std::size_t i = l;
    for (std::size_t j = 2 * l; j <= ir; j *= 2) {
      if (j < ir && ra[j].best > ra[j + 1].best) ++j;
      if (held.best <= ra[j].best) break;
      ra[i] = ra[j];
      i = j;
    }
    ra[i] = held;
  }
}

}  // namespace

void empty_store(PathStore& store, int32_t qlen) {
  store.slots.resize(static_cast<std::size_t>(qlen));
  for (UTvector<PathRec>& slot : store.slots) slot.clear();
  store.total = 0;
}

int32_t present(const PathRec& record, UTvector<PathRec>& slot) {
  for (PathRec& kept : slot) {
    if (kept.start_j != record.start_j) continue;
    if (record.best > kept.best) kept = record;
    return 1;
  }
  return 0;
}

void addsco(const PathRec& record, PathStore& store) {
  store.slots[static_cast<std::size_t>(record.start_i)].push_back(record);
  ++store.total;
}

UTvector<PathRec> dosort(PathStore& store) {
  UTvector<PathRec> paths;
  paths.reserve(static_cast<std::size_t>(store.total));
  for (const UTvector<PathRec>& slot : store.slots) paths.insert(paths.end(), slot.begin(), slot.end());
  store.slots = {};
  if (paths.size() != static_cast<std::size_t>(store.total)) error("k != total in dosort", 1);
  hsort(paths);
  return paths;
}
