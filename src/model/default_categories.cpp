#include "model/default_categories.h"

#include <algorithm>
#include <boost/json.hpp>
#include <set>
#include <vector>

#include "base/uuid.h"
#include "model/mv_category.h"
#include "model/title.h"
#include "model/transaction_type.h"
#include "platform/files.h"
#include "storage/transaction.h"

namespace moniva {
namespace {

namespace json = boost::json;

/// A category of the set.
struct DefaultCategory {
  std::string key;
  std::string parent;
  std::string title;
  int type = 0;
  int orderID = 0;
};

/// Both the stamp of the set and the time of its keys: a second after the epoch, before anything a person
/// did.
constexpr double kMadeForYou = 1;

/// Reads the file of a set: lists of groups under "expense" and "income", each with a list of subcategories.
class DefaultSetReader {
 public:
  explicit DefaultSetReader(std::string file) : file_(std::move(file)) {}

  Result<std::vector<DefaultCategory>> read(const std::string& text) {
    json::parser parser;
    json::error_code error;
    const auto parsed = parser.write(text, error);
    if (error) {
      const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(parsed, text.size()));
      return refuse("{}, line {}: {}", file_, 1 + std::count(text.begin(), end, '\n'), error.message());
    }
    const json::value set = parser.release();
    for (const auto& [name, type] :
         {std::pair{"expense", kind::kExpense}, std::pair{"income", kind::kIncome}}) {
      const json::value* groups = set.is_object() ? set.get_object().if_contains(name) : nullptr;
      if (auto taken = takeList(groups, name, type, "_rootCate", name); !taken) {
        return tl::make_unexpected(taken.error());
      }
    }
    return std::move(categories_);
  }

 private:
  /// `path` is made of the ids down to the list; `place` says where the list is in the file.
  Result<> takeList(const json::value* list, const std::string& place, int type, const std::string& parent,
                    const std::string& path) {
    if (list == nullptr || !list->is_array()) return refuse("{}: there is no list '{}'", file_, place);
    int orderID = 0;
    for (const json::value& entry : list->get_array()) {
      const std::string here = fmt::format("{}[{}]", place, orderID);
      DefaultCategory category{{}, parent, textOf(entry, "title"), type, ++orderID};
      const std::string id = textOf(entry, "id");
      if (id.empty()) return refuse("{}: {} has no id", file_, here);
      if (auto usable = checkTitle(category.title, "a category"); !usable) {
        return refuse("{}: {}: {}", file_, here, usable.error());
      }
      const std::string below = fmt::format("{}/{}", path, id);
      category.key = nameBasedUuidV7(kMadeForYou, "category " + below);
      if (!keys_.insert(category.key).second) {
        return refuse("{}: {} has the id '{}' of another one", file_, here, id);
      }
      const std::string key = category.key;
      categories_.push_back(std::move(category));
      if (parent != "_rootCate") continue;
      const auto taken = takeList(entry.get_object().if_contains("subcategories"), here + ".subcategories",
                                  type, key, below);
      if (!taken) return taken;
    }
    return {};
  }

  static std::string textOf(const json::value& entry, std::string_view name) {
    const json::value* found = entry.is_object() ? entry.get_object().if_contains(name) : nullptr;
    return found != nullptr && found->is_string() ? std::string(found->get_string()) : std::string();
  }

  std::string file_;
  std::vector<DefaultCategory> categories_;
  std::set<std::string> keys_;
};

Result<std::vector<DefaultCategory>> readDefaultSet(MVAppRoot& root) {
  const auto& platform = root.platform();
  const auto path =
      platform.directories.resources / "categories" / (platform.localization->language() + ".json");
  auto text = readFileIfPresent(path);
  if (!text) return tl::make_unexpected(text.error());
  if (!*text) return refuse("'{}' is missing", path.string());
  return DefaultSetReader(path.string()).read(**text);
}

Result<bool> hasRow(Connection& db, std::string_view sql, std::initializer_list<Value> arguments) {
  Run run = db.query(sql, arguments);
  const bool has = run.next();
  if (!run.ok()) return tl::make_unexpected(db.refusal());
  return has;
}

Result<bool> hasCategories(Connection& db) {
  return hasRow(db, "select 1 from category where type in (?, ?) limit 1", {kind::kIncome, kind::kExpense});
}

Result<bool> hasKey(Connection& db, const std::string& key) {
  return hasRow(db, "select 1 from category where oldTitle = ?", {key});
}

Result<std::size_t> insertSet(MVAppRoot& root, bool onlyIfNone) {
  Connection* db = root.db().getDatabase();
  if (db == nullptr) return refuse("the store is not open");
  // Asked at every start, mostly in vain: without the lock of a transaction first.
  if (onlyIfNone) {
    const auto has = hasCategories(*db);
    if (!has) return tl::make_unexpected(has.error());
    if (*has) return 0;
  }
  const auto categories = readDefaultSet(root);
  if (!categories) return tl::make_unexpected(categories.error());
  Transaction transaction(*db);
  if (!transaction.began()) return tl::make_unexpected(db->refusal());
  if (onlyIfNone) {
    const auto has = hasCategories(*db);
    if (!has) return tl::make_unexpected(has.error());
    if (*has) return 0;
  }
  std::size_t added = 0;
  for (const DefaultCategory& category : *categories) {
    const auto known = hasKey(*db, category.key);
    if (!known) return tl::make_unexpected(known.error());
    if (*known) continue;
    const bool written = root.executeUpdate(
        "insert into category (title, parent, type, deleted, editDate, familyUser, orderString, oldTitle,"
        " oldParent, edit_ipid, orderID) values(?,?,?,0,?,'',?,?,?,?,?)",
        category.title, category.parent, category.type, kMadeForYou, orderStringOf(category.title),
        category.key, category.parent, root.itsUDID(), category.orderID);
    if (!written) return tl::make_unexpected(db->refusal());
    ++added;
  }
  if (!transaction.commit()) return tl::make_unexpected(db->refusal());
  return added;
}

}  // namespace

Result<std::size_t> insertAllCategoryIfNeed(MVAppRoot& root) {
  return insertSet(root, true);
}

Result<std::size_t> insertAllCategory(MVAppRoot& root) {
  return insertSet(root, false);
}

}  // namespace moniva
