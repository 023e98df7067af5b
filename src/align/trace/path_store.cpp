#include "align/trace/path_store.h"

#include <algorithm>

#include "util/failure.h"
#include "util/index_sort.h"

namespace zelvan {

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
  UTvector<PathRec> kept;
  kept.reserve(static_cast<std::size_t>(store.total));
  for (const UTvector<PathRec>& slot : store.slots) kept.insert(kept.end(), slot.begin(), slot.end());
  store.slots = {};
  if (kept.size() != static_cast<std::size_t>(store.total)) error("k != total in dosort", 1);
  const auto path = [&kept](int32_t number) -> const PathRec& {
    return kept[static_cast<std::size_t>(number)];
  };
  const UTvector<int32_t> order =
      UTsorted_order(store.total, [&path](int32_t a, int32_t b) { return path(a).best > path(b).best; });
  UTvector<PathRec> sorted(kept.size());
  std::transform(order.begin(), order.end(), sorted.begin(), path);
  return sorted;
}

}  // namespace zelvan
