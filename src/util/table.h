// Two-dimensional tables in one block, row after row: table[r][c].
#pragma once

#include <cstddef>
#include <cstdint>

#include "util/memory.h"

namespace zelvan {

template <class T>
struct Table {
  int32_t rows = 0;
  int32_t cols = 0;
  UTvector<T> cells;  // rows * cols

  T* operator[](int32_t row) {
    return cells.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(cols);
  }
  const T* operator[](int32_t row) const {
    return cells.data() + static_cast<std::size_t>(row) * static_cast<std::size_t>(cols);
  }
};

// make_table - a table of rows x cols entries, all equal to `value`.
template <class T>
Table<T> make_table(int32_t rows, int32_t cols, T value) {
  Table<T> table;
  table.rows = rows;
  table.cols = cols;
  table.cells.assign(static_cast<std::size_t>(rows) * static_cast<std::size_t>(cols), value);
  return table;
}

}  // namespace zelvan
