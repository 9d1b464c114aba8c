#include "exchange/import_columns.h"

#include <unicode/unistr.h>

#include <algorithm>

#include "base/text.h"

namespace moniva {
namespace {

struct FieldWords {
  ImportField field;
  std::string_view heading;
  std::string_view words;  ///< folded, separated by blanks
};

constexpr std::array<FieldWords, importFieldCount> fieldWords = {{
    {ImportField::date, "Date",
     "date datetime transactiondate bookingdate datum buchungsdatum buchungstag 日期 交易日期 记账日期"},
    {ImportField::time, "Time", "time timeofday zeit uhrzeit 时间 交易时间 時間"},
    {ImportField::type, "Type", "type kind transactiontype typ art buchungsart 类型 收支类型 交易类型 類型"},
    {ImportField::book, "Book", "book ledger buch haushaltsbuch kassenbuch 账本 帐本 账簿 帳本"},
    {ImportField::account, "Account",
     "account fromaccount paidfrom paymentaccount konto vonkonto quellkonto zahlungskonto "
     "账户 帐户 付款账户 转出账户 帳戶"},
    {ImportField::category, "Category", "category kategorie 类别 分类 一级分类 類別 分類"},
    {ImportField::subcategory, "Subcategory", "subcategory unterkategorie 子类别 子分类 二级分类 子類別"},
    {ImportField::vendor, "Payee",
     "payee payer vendor merchant empfänger zahlungsempfänger zahlungspartner händler "
     "商家 商户 收款人 付款人 收款方 付款方 商戶"},
    {ImportField::amount, "Amount", "amount betrag summe 金额 金額"},
    {ImportField::foreignAmount, "Foreign amount",
     "foreignamount foreigncurrencyamount fremdbetrag fremdwährungsbetrag 外币金额 外幣金額"},
    {ImportField::foreignCurrency, "Foreign currency",
     "foreigncurrency foreigncurrencycode fremdwährung 外币 外币币种 外幣"},
    {ImportField::toAccount, "To account",
     "toaccount paidto targetaccount zielkonto aufkonto nachkonto 转入账户 目标账户 轉入帳戶"},
    {ImportField::toAmount, "To amount", "toamount targetamount zielbetrag 转入金额 轉入金額"},
    {ImportField::note, "Note",
     "note notes memo description comment notiz bemerkung beschreibung kommentar verwendungszweck "
     "备注 说明 摘要 備註"},
    {ImportField::currency, "Currency",
     "currency currencycode accountcurrency währung kontowährung 币种 货币 貨幣"},
}};

struct KindWords {
  ImportKind kind;
  std::string_view words;
};

constexpr std::array<KindWords, 3> kindWords = {{
    {ImportKind::expense, "expense expenses expenditure spending ausgabe ausgaben 支出"},
    {ImportKind::income, "income einnahme einnahmen 收入"},
    {ImportKind::transfer, "transfer umbuchung übertrag 转账 转帐 轉帳"},
}};

/// The form in which words are compared.
std::string folded(std::string_view text) {
  text = trimBlanks(text);
  std::string plain;
  for (const char c : text) {
    if (c == ' ' || c == '-' || c == '_' || c == '\t' || c == '\n' || c == '\r') continue;
    plain += c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  }
  const auto isAscii = [](char c) { return static_cast<unsigned char>(c) < 0x80U; };
  if (std::all_of(plain.begin(), plain.end(), isAscii)) return plain;
  auto wide = icu::UnicodeString::fromUTF8(plain);
  wide.foldCase().findAndReplace(icu::UnicodeString(u"\u00A0"), icu::UnicodeString());
  std::string result;
  return wide.toUTF8String(result);
}

bool isAmong(std::string_view word, std::string_view words) {
  while (!words.empty() && !word.empty()) {
    const auto end = std::min(words.find(' '), words.size());
    if (words.substr(0, end) == word) return true;
    words.remove_prefix(std::min(end + 1, words.size()));
  }
  return false;
}

constexpr std::size_t indexOf(ImportField field) {
  return static_cast<std::size_t>(field);
}

}  // namespace

std::string_view headingOf(ImportField field) {
  return fieldWords[indexOf(field)].heading;
}

Result<ImportColumns> ImportColumns::find(std::span<const std::string> headings) {
  ImportColumns found;
  for (std::size_t column = 0; column < headings.size(); ++column) {
    const auto& heading = headings[column];
    const auto word = folded(heading);
    const auto known = std::find_if(fieldWords.begin(), fieldWords.end(),
                                    [&](const FieldWords& words) { return isAmong(word, words.words); });
    if (known == fieldWords.end()) {
      found.ignored_.push_back(word.empty() ? fmt::format("column {}", column + 1) : heading);
      continue;
    }
    auto& place = found.columns_[indexOf(known->field)];
    if (place) {
      return refuse("columns {} '{}' and {} '{}' of the heading both mean {}", *place + 1,
                    excerpt(headings[*place]), column + 1, excerpt(heading), known->heading);
    }
    place = column;
  }
  for (const auto required : {ImportField::date, ImportField::amount}) {
    if (!found.has(required)) return refuse("no column has the heading {}", headingOf(required));
  }
  return found;
}

std::optional<std::size_t> ImportColumns::of(ImportField field) const {
  return columns_[indexOf(field)];
}

std::optional<ImportKind> importKindOf(std::string_view text) {
  const auto word = folded(text);
  for (const auto& [kind, words] : kindWords) {
    if (isAmong(word, words)) return kind;
  }
  return std::nullopt;
}

}  // namespace moniva
