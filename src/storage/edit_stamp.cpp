#include "storage/edit_stamp.h"

#include <algorithm>

namespace moniva {
namespace {

/// The newest stamp of each table. Texts (left by old faults) sort above every number and are passed over;
/// the bound also keeps a nonsensical number from pushing every stamp to come out of all reason.
constexpr std::string_view kNewestStamps =
    "select max(stamp) from ("
    "select * from (select editDate as stamp from transactions where editDate < 32503680000.0 order by "
    "editDate DESC limit 1) "
    "union all select max(editDate) from account where editDate < 32503680000.0 "
    "union all select max(editDate) from category where editDate < 32503680000.0 "
    "union all select max(editDate) from categoryofbook where editDate < 32503680000.0 "
    "union all select * from (select datetime from photos where datetime < 32503680000.0 order by datetime "
    "DESC limit 1) "
    "union all select max(editDate) from monivaSys where editDate < 32503680000.0)";

/// Doubles of this century are 2.4e-7 s apart; a step of a microsecond always shows.
constexpr double kStep = 1e-6;

}  // namespace

Date EditStamp::next(Connection& connection, Date now) {
  const std::scoped_lock lock(mutex_);
  const std::size_t slot = seenBy_[0] == &connection || seenBy_[0] == nullptr ? 0 : 1;
  const std::int64_t version = connection.dataVersion();
  if (seenBy_[slot] != &connection || seenVersion_[slot] != version) {
    Run run = connection.query(kNewestStamps);
    if (run.next()) last_ = std::max(last_, run.real(0));
    seenBy_[slot] = &connection;
    seenVersion_[slot] = version;
  }
  last_ = std::max(now.secondsSince1970, last_ + kStep);
  return Date{last_};
}

void EditStamp::forget() {
  const std::scoped_lock lock(mutex_);
  last_ = 0;
  seenBy_[0] = seenBy_[1] = nullptr;
  seenVersion_[0] = seenVersion_[1] = -1;
}

}  // namespace moniva
