#include "app/do_db_updater.h"
#include "recurrence/do_db_recurring.h"
#include "recurrence/settle_due.h"

namespace moniva {

Result<> updateCategoryPK(MVAppRoot&) {
  return {};
}
Result<> updateRepeatSeedTransaction(MVAppRoot&) {
  return {};
}
Result<> clearWrongRecurringItem2(MVAppRoot&) {
  return {};
}
Result<> updateNOCategoryTitle(MVAppRoot&) {
  return {};
}
Result<> updateFixData(MVAppRoot&) {
  return {};
}
Result<> updateDataFiled202102(MVAppRoot&) {
  return {};
}
Result<> fixWrongDeletedByClearDuplicateRecurringItem20210209(MVAppRoot&) {
  return {};
}
Result<> updateDataFiled20210305(MVAppRoot&) {
  return {};
}
Result<> clearDuplicateAccountWithSamePK(MVAppRoot&) {
  return {};
}
Result<> fixWrongDeletedByClearRecurringItem20210412(MVAppRoot&) {
  return {};
}
Result<> fixAllRepeat(MVAppRoot&) {
  return {};
}
Result<> fixWrongDeletedByClearRecurringItem20220719(MVAppRoot&) {
  return {};
}
bool needsFixDataForMoniva1(MVAppRoot&) {
  return false;
}
Result<> fixDataForMoniva1IfNeed(MVAppRoot&) {
  return {};
}

Result<CatchUp> updateRecurringTransactionsWithFuture(MVAppRoot&) {
  return CatchUp{};
}
Result<int> makeMonivasPaid(MVAppRoot&) {
  return 0;
}

}  // namespace moniva
