#pragma once

#include <boost/json/value.hpp>
#include <string>

#include "model/moniva_account.h"
#include "model/record_template.h"
#include "model/spend.h"
#include "model/transfer.h"
#include "model/vendor.h"
#include "reports/trans_report_summary.h"
#include "ui/cli/session.h"

/// Records as JSON under the names of their fields, and the few texts that several commands print of them.
namespace moniva {

/// "2024-02-29T14:30:05+01:00", in the user's zone; in UTC ("2024-02-29T13:30:05Z") where the zone's distance
/// is no whole number of minutes, which this way of writing cannot hold. Null for no date.
boost::json::value isoDate(Session& session, std::optional<Date> date);

boost::json::object jsonOf(Session& session, const MonivaAccount& account);
/// The same with what `getAllStatistics` and `getAllPeriod` computed.
boost::json::object jsonWithTotals(Session& session, const MonivaAccount& account);
boost::json::object jsonOf(Session& session, const Vendor& vendor);
boost::json::object jsonOf(Session& session, const Spend& spend);
boost::json::object jsonOf(Session& session, const Transfer& transfer);
boost::json::object jsonOf(Session& session, const RecordTemplate& kept);
boost::json::object jsonOf(Session& session, const TransReportSummary& summary);

/// "Feb 29, 2024 14:30" in the words of the user's locale.
std::string dateText(Session& session, Date date);

/// A code typed for the currency of something new, or the default one for none. Ends the command for what is
/// no currency.
std::string currencyTyped(Session& session, const std::string& code);
/// The code of that currency as the answer tells it: with how it was guessed, where it was.
std::string takenCurrencyText(Session& session, const std::string& typedCode, const std::string& code);

/// What a name may mean: one book or account; one that takes new records; or a group as well.
enum class Meant { single, open, groupsToo };
/// The live book or account of that name. Ends the command when there is none, with the nearest name there
/// is, and when what the name means is not what is asked for; a blank book name means the current book.
MonivaAccount bookNamed(Session& session, const std::string& name, Meant meant = Meant::single);
MonivaAccount accountNamed(Session& session, const std::string& name, Meant meant = Meant::single);

/// Ends the command when the book or account is closed.
void requireOpen(const MonivaAccount& row);
/// The group of accounts of that name, or of books; where there are both and `ofBooks` is not set, the former
/// is meant.
MonivaAccount groupNamed(Session& session, const std::string& name, bool ofBooks);

/// The live vendor of that name: a payee unless only a payer has it or `income` is asked for. Ends the
/// command for none, with the nearest there is.
Vendor vendorNamed(Session& session, const std::string& typedName, bool income);

}  // namespace moniva
