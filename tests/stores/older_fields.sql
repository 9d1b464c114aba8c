-- Columns filled in older ways, or not at all; groups with a list of members in their password.
INSERT INTO account (eid, oldTitle, title, kind, type, isGroup, currency, incomeEnabled, password, expandOption, orderID) VALUES
  (1, 'home', 'Home', 2, '_Book', 0, 'EUR', 1112, '', 'BookDashboardModernControllerV1', 0),
  (2, 'club', 'Club', 2, '_Book', 0, 'EUR', 1112, '', '{ overviewUI = "BookDashboardPadController"; showProfitForSummary = 1; }', 0),
  (3, 'cash', 'Cash', 1, '_SavingAccount', 0, 'EUR', 1050, '', '{"notificationEnabled":"1"}', 4),
  (4, 'bank', 'Bank, big', 1, '_SavingAccount', 0, 'EUR', 1050, '', '{"cut":"of', 4),
  (5, 'books', 'Books', 2, '_BookGroup', 1, 'EUR', 1112, '["home","Club","home","gone",7]', '', 0),
  (6, 'accounts', 'Accounts', 1, '_AccountGroup', 1, 'EUR', 1050, 'Bank, big' || char(10) || 'cash,lost', '', 0),
  (7, 'locked', 'Locked', 1, '_AccountGroup', 1, 'EUR', 1050, x'0011', '', 0);
INSERT INTO category (pk, oldTitle, title, parent, type, deleted, editDate) VALUES
  (1, 'food', 'Food', '_rootCate', 12, 0, 5), (2, 'bread', 'Bread', 'food', 12, 0, 5),
  (3, 'm', 'club', 'books', 8, 1, 5), (4, 'n', 'cash', 'accounts', 8, 0, 5),
  (5, '01890a5d-ac96-774b-bcce-b302099a8057', 'Anna', '', 6, 0, 5),
  (6, 'boss', 'Boss', '', 6, 0, 5), (7, 'shop', 'Shop', '', 6, 3, 5), (8, 'left', 'Left', '', 6, 1, 5);
INSERT INTO monivaSys (key, value) VALUES ('enabledCategoryForBook', '1');
INSERT INTO transactions (eid, bid, type, amount, category, subcategory, vendor, account, book, transferEID, syear, familyUser, barcode) VALUES
  ('a', 10, 12, 1, '', 'food', '', 'cash', '', 'g', 1004, '', ''),
  ('b', 20, 12, 1, 'food', 'food', 'shop', 'cash', 'home', 'g', 1004, 'Europe/Berlin', ''),
  ('c', 10, 12, 2, NULL, 'bread', 'left', 'cash', NULL, '', 2015, '_user/7', NULL),
  ('d', 20, 14, 4, 'food', '', 'shop', '', 'home', NULL, NULL, 'Europe/Berlin', 'Asia/Tokyo'),
  ('e', 20, 11, 8, 'food', '#NOMVCATEGORY', 'boss', 'cash', 'home', '', 1000, '', ''),
  ('f', 10, 34, 16, '', NULL, '01890a5d-ac96-774b-bcce-b302099a8057', 'cash', '', '', 0, '', ''),
  ('g', 10, 25, 6, '', '', '', 'cash', '', 'f', 0, '', ''),
  ('h', 20, 60, 9, '', '', '', '', 'home', '', 2024, '', ''),
  ('j', 20, 11, 3, 'food', 'food', 'boss', '', '', '', 0, '', ''),
  ('i', x'01', x'02', 'x', x'03', x'04', x'05', x'06', x'07', x'08', 'text', x'09', x'0a');
UPDATE transactions SET deleted = NULL, paid = NULL WHERE eid = 'e';
UPDATE transactions SET repeat_seed = NULL;
CREATE TABLE transactions_temp (eid TEXT, type INTEGER, amount REAL, account TEXT, paid INTEGER, late TEXT);
INSERT INTO transactions_temp VALUES ('a', 12, 99, 'bank', 1, ''), ('back', 12, 5, 'bank', 1, 'x');
