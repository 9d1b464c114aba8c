-- Rows are known by their titles, categories of books by the numbers of rows.
INSERT INTO account (eid, title, type, kind, currency, beginBalance, incomeEnabled, editDate, deleted) VALUES
  (1, 'Home', '_Book', 2, 'EUR', 0, 1112, 5, 0),
  (2, 'Cash', '_SavingAccount', 1, 'EUR', 0, 1050, 5, 0),
  (3, 'Cash', '_SavingAccount', 1, 'EUR', 100, 1050, 4, 0),
  (4, 'Cash', '_Book', 2, 'EUR', 0, 1112, 5, 0),
  (5, 'Visa', '_SavingAccount', 1, 'EUR', 0, 1050, 5, 0),
  (6, 'Visa', '_SavingAccount', 1, 'USD', 7, 1050, 4, 0),
  (7, NULL, '_Book', 2, 'EUR', 0, 1112, 'yesterday', 0);

INSERT INTO category (pk, title, parent, type, editDate, deleted) VALUES
  (1, 'Food', '_rootCate', 12, 5, 0), (2, 'Bakery', 'Food', 12, 5, 0),
  (3, 'Food', '', 12, 4, 0), (4, 'Other', 'Food', 12, 5, 0),
  (5, 'Fun', '_rootCate', 12, 5, 0), (6, 'Other', 'Fun', 12, 5, 0),
  (7, 'Food', '_rootCate', 11, 5, 0), (8, 'Gone', 'Lost', 12, 5, 1),
  (9, NULL, NULL, NULL, x'00', NULL), (10, '', 'Food', 12, 5, 0),
  (11, 'Lang', '', 6, 5, 0), (12, 'Lang', '', 6, 6, 1), (13, 'Lang', '', 9, 5, 0),
  (14, 'USD', '_currency', 0, 5, 0), (15, 'Fun', 'Fun', 12, 5, 0);

DROP TABLE categoryofbook;
CREATE TABLE categoryofbook (pk INTEGER, book INTEGER, cateOrder INTEGER DEFAULT 0, used INTEGER DEFAULT 0,
  enabled BLOB DEFAULT YES, editDate REAL DEFAULT '');
INSERT INTO categoryofbook VALUES (1, 1, 3, 9, 0, 5), (2, 4, 1, 0, 1, ''), (77, 1, 0, 0, x'31', NULL), (5, NULL, 0, 0, 'YES', 5);

INSERT INTO transactions (eid, bid, type, amount, category, subcategory, vendor, account, book, transferEID, datetime) VALUES
  ('top', 20, 12, 1, 'Food', 'Food', 'Lang', 'Cash', 'Home', '', 1e9),
  ('below', 20, 12, 2, 'Food', 'Bakery', 'NoPayee', 'Cash', 'Cash', '', 1e9),
  ('twice', 20, 12, 4, 'Fun', 'Other', '', 'Visa', 'Home', '', 1e9),
  ('same', 20, 12, 4, 'Fun', 'Fun', '', 'Visa', 'Home', '', 1e9),
  ('income', 20, 11, 8, 'Food', '#NOMVCATEGORY', 'Lang', 'Cash', 'Home', '', 1e9),
  ('bare', 20, 12, 16, NULL, 'Bakery', NULL, '', 'Home', '', 1e9),
  ('unknown', 20, 12, 32, 'Old', 'Older', 'Nobody', '', 'Home', '', 1e9),
  ('paid', 10, 12, 64, 'Home', '#NOMVCATEGORY', '', 'Cash', '', 'g', 1e9),
  ('out', 10, 33, 10, '', '', 'Visa', 'Cash', '', 't', 1e9), ('in', 10, 23, 10, '', '', 'Cash', 'Visa', '', 't', 1e9),
  ('debt', 10, 34, 5, '', '', 'Lang', 'Cash', '', '', 1e9),
  ('bad', x'00', 12, 'much', x'ff', x'ff', x'ff', NULL, NULL, NULL, 'then');
