// Memory for rows that grows to what was asked for, and stays.
#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>

namespace vellim {

template <typename Entry>
class RowBuffer {
  public:
    // False, with what there was, without memory.
    bool Reserve(size_t count) {
        if (count <= count_) return true;
        std::unique_ptr<Entry[]> fresh(new (std::nothrow) Entry[count]);
        if (fresh == nullptr) return false;
        entries_ = std::move(fresh);
        count_ = count;
        return true;
    }
    [[nodiscard]] Entry* Get() const { return entries_.get(); }

  private:
    std::unique_ptr<Entry[]> entries_;
    size_t count_ = 0;
};

}  // namespace vellim
