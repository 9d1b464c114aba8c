#include "model/entry_checks.h"
#include "ui/cli/command_error.h"
#include "ui/cli/commands/entry_fields.h"
#include "ui/cli/commands/spend_commands.h"
#include "ui/cli/records.h"
#include "ui/cli/typed_text.h"

namespace moniva {
namespace {

struct CartOptions {
  std::vector<std::pair<std::string, std::string>> items;  ///< amount and category
  EntryFields fields;
};

void addCart(Session& session, const CartOptions& options) {
  const auto& fields = options.fields;
  enterRecord(
      session, fields,
      [&] {
        Spend like(session.root());
        like.datetime = momentTyped(session, fields.date);
        like.note = asTyped(fields.note, "the note");
        like.paid = !fields.pending && isPaidAt(like.datetime, session.now());
        const auto names = fillEntry(session, fields, like);
        like.account.clear();
        std::vector<Spend> items;
        double total = 0;
        for (const auto& [amount, category] : options.items) {
          Spend item = like;
          item.amount = amountTyped(session, amount, names.currency, fields.amounts);
          const auto chosen = categoryChosen(session, category, "", like.type, names.book, fields.create);
          if (chosen) {
            item.category = chosen->category;
            item.subcategory = chosen->subcategory;
          }
          total = withoutNoise(total + item.amount);
          items.push_back(std::move(item));
        }
        auto payments = paymentsTyped(session, fields, names, like, total);
        done(Spend::addCart(session.root(), items, payments));
        return items.front().eid;
      },
      [&](const RecordTexts& texts) {
        return session.text("Added {}", texts.described()) + texts.stillOpen();
      });
}

struct CartItemOptions {
  std::string cart;
  std::string amount;
  std::string category;
  std::string vendor;
  std::string note;
  bool create = false;
  AmountOptions amounts;
};

/// "The cart has 2 items, €30.00, now. €5.00 is still to be paid."
std::string cartNow(Session& session, const RecordTexts& texts) {
  const auto items = static_cast<std::int64_t>(texts.whole().group.items.size());
  return session.count("The cart has {} item now", "The cart has {} items now", items) + ", " +
         texts.amount() + "." + texts.stillOpen();
}

void addCartItem(Session& session, const CartItemOptions& options) {
  std::string eid;
  changeStore(session, [&] {
    const auto whole = wholeTyped(session, options.cart);
    if (!whole.isCart()) throw refused("the record is in no cart");
    Spend cart = spendOf(session, whole.head.eid);
    Spend item(session.root());
    item.type = cart.type;
    item.datetime = cart.datetime;
    item.timeZone = cart.timeZone;
    item.paid = cart.paid;
    item.book = cart.book;
    item.note = asTyped(options.note, "the note");
    item.amount = amountTyped(session, options.amount, currencyOf(session, whole), options.amounts);
    const auto book = MonivaAccount::getAccountWithPK(session.root(), cart.book);
    const auto category = categoryChosen(session, options.category, "", item.type,
                                         book ? *book : MonivaAccount(session.root()), options.create);
    if (category) {
      item.category = category->category;
      item.subcategory = category->subcategory;
    }
    item.vendor = options.vendor.empty() ? cart.vendor : vendorChosen(session, options.vendor, item.type);
    done(cart.addToCart(item));
    eid = item.eid;
  });
  answerChanged(session, eid, [&](const RecordTexts& texts) {
    return session.text("Added the item.") + " " + cartNow(session, texts);
  });
}

void removeCartItem(Session& session, const std::string& text) {
  std::string eid;
  std::string left;
  changeStore(session, [&] {
    const auto whole = wholeTyped(session, text, &eid);
    Spend item = spendOf(session, eid);
    if (item.bid == kPaymentRow && whole.isCart()) {
      throw refused("this is a payment; take it away with: moniva payment remove {}", shortEid(eid));
    }
    done(item.removeFromCart());
    for (const auto& other : whole.group.items) {
      if (other.eid != eid) left = other.eid;
    }
  });
  answerChanged(session, left, [&](const RecordTexts& texts) {
    return session.text("Took the item out.") + " " + cartNow(session, texts) + " " +
           session.text("The item comes back as a record of its own with: moniva restore {}", shortEid(eid));
  });
}

}  // namespace

void addCartCommands(CommandLine& line) {
  CLI::App* cart = line.add(line.app(), "cart");
  cart->require_subcommand(1);
  CLI::App* add = line.add(*cart, "add");
  auto options = std::make_shared<CartOptions>();
  add->add_option("--item", options->items, "What was bought: amount and category, such as 12.50 Food/Bakery")
      ->type_name("AMOUNT CATEGORY")
      ->allow_extra_args(false)
      ->required();
  addAccountFields(*add, options->fields, true);
  addEntryFields(*add, options->fields);
  add->add_flag("--pending", options->fields.pending, kNotPaidYet);
  addDryRun(*add, options->fields.dryRun);
  line.onRun(add, [options](Session& session) { addCart(session, *options); });

  CLI::App* item = line.add(*cart, "item");
  item->require_subcommand(1);
  CLI::App* itemAdd = line.add(*item, "add");
  auto one = std::make_shared<CartItemOptions>();
  itemAdd->add_option("CART", one->cart, "The cart: the eid of any part of it, or the end of it")->required();
  itemAdd->add_option("AMOUNT", one->amount, "The amount, above zero")->required();
  itemAdd->add_option("CATEGORY", one->category, "The category, such as Food or Food/Bakery")->required();
  itemAdd->add_option("--vendor,--payee,--payer", one->vendor, "Who was paid (else as the cart)")
      ->type_name("NAME");
  itemAdd->add_option("-n,--note", one->note, "A note")->type_name("TEXT");
  itemAdd->add_flag("--create", one->create, "Make the category or subcategory when it is new");
  addRoundOption(*itemAdd, one->amounts);
  line.onRun(itemAdd, [one](Session& session) { addCartItem(session, *one); });
  CLI::App* itemRemove = line.add(*item, "remove");
  auto gone = std::make_shared<std::string>();
  itemRemove->add_option("ITEM", *gone, "The item: its eid, or the end of it")->required();
  line.onRun(itemRemove, [gone](Session& session) { removeCartItem(session, *gone); });
  addCompoundList(line, *cart, advanced::kCart);
}

}  // namespace moniva
