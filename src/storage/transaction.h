#pragma once

#include "storage/connection.h"

namespace moniva {

/// All or nothing: what is written while the scope lives is kept when `commit` succeeds and undone otherwise.
/// Scopes nest on one connection: an inner one that is not committed undoes its own writes only; an inner one
/// that is committed waits for the outer one.
class Transaction {
 public:
  /// Begins writing at once (waiting for another program up to the busy timeout), so that nothing that
  /// follows can be refused half-way. `began` tells whether that worked.
  explicit Transaction(Connection& connection);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  bool began() const { return open_; }
  /// False when the writes could not be kept; they are undone then.
  bool commit();

 private:
  Connection& connection_;
  int depth_ = 0;
  bool outermost_ = false;
  bool open_ = false;
};

/// One snapshot for everything read while the scope lives. Inside another scope it adds nothing.
class ReadTransaction {
 public:
  explicit ReadTransaction(Connection& connection);
  ~ReadTransaction();
  ReadTransaction(const ReadTransaction&) = delete;
  ReadTransaction& operator=(const ReadTransaction&) = delete;

 private:
  Connection* connection_ = nullptr;
};

}  // namespace moniva
