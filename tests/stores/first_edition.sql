-- A store of the first edition: no books, accounts known by their titles, kinds 0, 1, 3 and 4.

INSERT INTO account (title, currency, beginBalance) VALUES ('Wallet', 'EUR', 100), ('Savings', 'CHF', 0), ('Old tin', '', 5);

INSERT INTO category (title, parent, type, oldTitle) VALUES
  ('Food', '', 0, ''), ('Work', '_rootCate', 1, ''), ('USD', '_currency', 0, ''), ('Wallet', 'Both', 7, '');

INSERT INTO transactions (eid, type, amount, account, currency2, transferEID, book, deleted, datetime) VALUES
  ('bread', 0, 3, 'Wallet', '', '', '', 0, 1400000000), ('cheese', 0, 4, 'Wallet', 'USD', '', NULL, 0, 1400000001),
  ('wage', 1, 50, 'Savings', '', '', '', 0, 1400000002), ('taxi', 0, 9, '', 'USD', '', '', 0, 1400000003),
  ('tip', 0, 1, NULL, NULL, NULL, NULL, 0, 1400000004), ('tin', 1, 2, 'Old tin', '', '', '', 0, 1400000005),
  ('dropped', 0, 8, 'Wallet', '', '', '', 1, 1400000006),
  ('out', 3, 20, 'Wallet', '', 'T', '', 0, 1400000007), ('in', 4, 21, 'Savings', '', 'T', '', 0, 1400000007);

INSERT INTO photos (eid, photoFull, photoLite, uploaded, downloaded) VALUES ('bread', 'a.jpg', 'b.jpg', 1, 1);
