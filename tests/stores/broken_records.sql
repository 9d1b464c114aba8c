-- Transfers that lost an account or a side, and compound records whose rows do not agree. A row called stay-... must
-- stay as it is.

INSERT INTO account (title, oldTitle, kind, type, currency, incomeEnabled, totalBalance) VALUES
  ('Home', 'Home', 2, '_Book', 'EUR', 1112, -30), ('Club', 'Club', 2, '_Book', 'EUR', 1112, -10),
  ('Cash', 'Cash', 1, '_SavingAccount', 'EUR', 1050, -70), ('Bank', 'Bank', 1, '_SavingAccount', 'EUR', 1050, 30);

-- Accounts: blank, NULL and unknown ones come back from the other side; not where it knows no better.
INSERT INTO transactions (eid, bid, type, amount, account, vendor, transferEID, deleted, ipid, editDate) VALUES
  ('blank-a', '10', 33, 10, '', 'Bank', 'T1', 0, '', 1), ('blank-b', '10', 23, 10, 'Bank', 'Cash', 'T1', 0, '', 1),
  ('null-a', '10', 33, 10, 'Cash', NULL, 'T2', 0, '', 1), ('null-b', '10', 23, 10, 'Bank', 'Cash', 'T2', 0, '', 1),
  ('lost-a', '10', 33, 10, 'Cash', 'Gone', 'T3', 0, '', 1), ('lost-b', '10', 23, 10, 'Gone', 'Cash', 'T3', 0, '', 1),
  ('stay-same-a', '10', 33, 10, '', 'Bank', 'T4', 0, '', 1), ('stay-same-b', '10', 23, 10, 'Bank', 'Bank', 'T4', 0, '', 1),
  ('stay-alone', '10', 33, 10, '', 'Bank', 'T5', 0, '', 1),
-- Sides that went.
  ('whole-a', '10', 33, 20, 'Cash', 'Bank', 'T6', 0, '', 1),
  ('stay-older-b', '10', 23, 20, 'Bank', 'Cash', 'T6', 3, '', 1),
  ('whole-b', '10', 23, 20, 'Bank', 'Cash', 'T6', 3, 'delete by fixDuplicateRecurringItem 582', 2),
  ('stay-cleared-a', '10', 33, 20, 'Cash', 'Bank', 'T7', 0, '', 1),
  ('stay-cleared-b', '10', 23, 20, 'Bank', 'Cash', 'T7', 3, 'delete by clear account data on 2021-01-01', 1),
  ('stay-user-a', '10', 33, 20, 'Cash', 'Bank', 'T8', 1, '', 1),
  ('stay-user-b', '10', 23, 20, 'Bank', 'Cash', 'T8', 3, '', 1),
  ('stay-other-a', '10', 33, 10, 'Cash', 'Elsewhere', 'T9', 0, '', 1),
  ('stay-other-b', '10', 23, 10, 'Bank', 'Cash', 'T9', 3, '', 1);

-- Plans, one whose seed and one whose parts do not say that they are; a spread cost that is none.
INSERT INTO transactions (eid, bid, type, syear, amount, transferEID, account, book) VALUES
  ('plan-seed', '20', 86, 0, 20, 'P1', 'Cash', 'Home'), ('plan-1', '20', 12, 1003, 10, 'P1', '', 'Home'),
  ('plan-2', '20', 12, NULL, 10, 'P1', '', 'Home'), ('plan-2-paid', '10', 12, 0, 10, 'P1', 'Cash', ''),
  ('stay-cost-seed', '20', 86, 0, 10, 'P2', '', 'Home'), ('stay-cost-1', '20', 12, 1002, 10, 'P2', '', 'Home'),
  ('stay-seed-alone', '20', 86, 0, 20, 'P3', 'Cash', 'Home');

-- Carts: an item whose book is blank, one whose book is unknown where the others differ.
INSERT INTO transactions (eid, bid, type, syear, amount, transferEID, book) VALUES
  ('cart-1', '20', 12, 1001, 5, 'C1', 'Club'), ('cart-2', '20', 12, 1001, 6, 'C1', ''),
  ('cart-3', '20', 12, 1001, 7, 'C1', 'Gone'),
  ('stay-cart-1', '20', 12, 1001, 5, 'C2', 'Club'), ('stay-cart-2', '20', 12, 1001, 0, 'C2', 'Home'),
  ('stay-cart-3', '20', 12, 1001, 7, 'C2', '');

-- Spread costs in shares of the older kind: one with a seed, one whose money is counted already.
INSERT INTO transactions (eid, bid, type, syear, amount, amount2, transferEID, book) VALUES
  ('cost-seed', '20', 86, 1002, 29, 1, 'K1', 'Home'), ('cost-1', '20', 14, 1002, 10, 0, 'K1', 'Home'),
  ('cost-2', '20', 14, 1002, 20, 0, 'K1', 'Home'),
  ('stay-counted', '20', 12, 1002, 30, 0, 'K2', ''), ('stay-share-1', '20', 14, 1002, 10, 0, 'K2', 'Home'),
  ('stay-share-2', '20', 14, 1002, 20, 0, 'K2', 'Home'),
  ('stay-both-seed', '20', 86, 1002, 30, 0, 'K3', ''), ('stay-both', '20', 12, 1002, 30, 0, 'K3', ''),
  ('stay-both-share', '20', 14, 1002, 30, 0, 'K3', 'Home');
