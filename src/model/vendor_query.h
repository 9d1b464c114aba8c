#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "model/vendor.h"

namespace moniva {

/// Vendors that are filed under one letter.
struct VendorSection {
  /// The letter; "#" for titles that do not begin with one; blank where nothing is filed by letter.
  std::string orderLetter;
  std::vector<Vendor> cateArrayOfSameLetter;
};

/// Lists the live vendors of a type in the order the user chose. Two live rows of one title are listed once,
/// a row without a key not at all.
class VendorQuery {
 public:
  explicit VendorQuery(MVAppRoot& root, int rowType = Vendor::kPayee) : type(rowType), root_(&root) {}

  int type;

  /// The list in the order of the type's setting.
  std::vector<VendorSection> getVendorList();
  /// The list in a mode of `Vendor::getOrderType`: by letter for "2"; else one section without a letter,
  /// headed by the entry for no vendor, in the user's own order for "0" and by use for "1". For any other
  /// mode it has that entry alone.
  std::vector<VendorSection> getVendorList(std::string_view mode);
  /// Sections by letter; they and the titles in them as the user's language orders them, "#" last. A row
  /// without a sort text gets one, which is written to the store as an edit.
  /// Where another program is writing that is left for another time.
  std::vector<VendorSection> getVendorListByAlpha();
  /// One list by title as the user's language orders them, those that begin with no letter last.
  std::vector<Vendor> getVendorListByName();

 private:
  std::vector<Vendor> listed(std::string_view sql);
  std::vector<Vendor> listedByOrderString();
  void completeOrderStrings(std::vector<Vendor>& vendors);

  MVAppRoot* root_;
};

}  // namespace moniva
