#pragma once

#include <cstddef>

namespace bench {

// Counts what this process's databases do while the object lives.
class StoreCount {
 public:
  StoreCount();
  [[nodiscard]] std::size_t syncs() const;         // calls of fsync and fdatasync
  [[nodiscard]] std::size_t transactions() const;  // committed, that wrote something

 private:
  std::size_t m_syncs;
  std::size_t m_transactions;
};

// From now on transactions are counted, in databases that are opened later.
void countTransactions();

}  // namespace bench
