-- Records that carry their rule themselves, as versions before the seeds had them.

INSERT INTO account (title, oldTitle, kind, type, currency) VALUES
  ('Home', 'Home', 2, '_Book', 'EUR'), ('Cash', 'Cash', 1, '_SavingAccount', 'EUR'),
  ('Bank', 'Bank', 1, '_SavingAccount', 'EUR'), ('Dollars', 'Dollars', 1, '_SavingAccount', 'USD');

INSERT INTO transactions (eid, bid, type, amount, repeat, repeat_end_date, datetime, account, book, category, subcategory, vendor, barcode) VALUES
  ('rent', '20', 12, 500, 'Monthly', 1735689599, strftime('%s', '2015-01-31 11:00'), 'Cash', 'Home', 'Flat', 'Rent', 'Lang', 'Europe/Berlin'),
  ('wage', '', 11, 900, 'Biweekly', '', strftime('%s', '2024-02-20 11:00'), 'Bank', 'Home', 'Work', 'Work', NULL, NULL),
  ('fee', '10', 12, 3, 'Yearly', 0, strftime('%s', '2024-02-29 11:00'), 'Bank', '', '', '#NOMVCATEGORY', '', '');

-- What stays as it is: no rule, no date, no amount, deleted, in a series, no repeat at all, a share of a plan.
INSERT INTO transactions (eid, bid, type, amount, repeat, datetime, account, deleted, repeat_seed, syear) VALUES
  ('left-rule', '20', 12, 5, 'Whenever', strftime('%s', '2024-02-20'), 'Cash', 0, '', 0),
  ('left-undated', '20', 12, 5, 'Daily', NULL, 'Cash', 0, '', 0),
  ('left-nothing', '20', 12, 0, 'Daily', strftime('%s', '2024-02-20'), 'Cash', 0, NULL, 0),
  ('left-deleted', '20', 12, 5, 'Daily', strftime('%s', '2024-02-20'), 'Cash', 1, '', 0),
  ('left-made', '20', 12, 5, 'Daily', strftime('%s', '2024-02-20'), 'Cash', 0, 'seed', 0),
  ('left-once', '20', 12, 5, 'Not Repeat', strftime('%s', '2024-02-20'), 'Cash', 0, '', 0),
  ('left-null', '20', 12, 5, NULL, strftime('%s', '2024-02-20'), 'Cash', 0, NULL, NULL),
  ('left-share', '20', 12, 5, 'Monthly', strftime('%s', '2024-02-20'), '', 0, '', 1003),
  ('left-seed', '20', 85, 5, 'Daily', strftime('%s', '2024-03-01'), 'Cash', 0, '', 12);

-- Transfers: with a charge, across currencies with and without the other amount, one that lost its side.
INSERT INTO transactions (eid, bid, type, amount, amount2, repeat, datetime, account, vendor, transferEID) VALUES
  ('save-a', '10', 33, 102, 0, 'Quarterly', strftime('%s', '2024-01-31 11:00'), 'Cash', 'Bank', 'T1'),
  ('save-b', '10', 23, 100, 0, 'Quarterly', strftime('%s', '2024-01-31 11:00'), 'Bank', 'Cash', 'T1'),
  ('send-a', '10', 33, 100, 110, '', strftime('%s', '2024-02-10 11:00'), 'Cash', 'Dollars', 'T2'),
  ('send-b', '10', 23, 110, 100, 'Weekly', strftime('%s', '2024-02-10 11:00'), 'Dollars', 'Cash', 'T2'),
  ('yen-a', '10', 33, 120, 0, 'Daily', strftime('%s', '2024-02-10 11:00'), 'Dollars', 'Cash', 'T3'),
  ('yen-b', '10', 23, 110, 0, 'Daily', strftime('%s', '2024-02-10 11:00'), 'Cash', 'Dollars', 'T3'),
  ('left-half', '10', 33, 10, 0, 'Daily', strftime('%s', '2024-02-10 11:00'), 'Cash', 'Bank', 'T4');

-- A record with its payment, both of which carry the rule.
INSERT INTO transactions (eid, bid, type, amount, repeat, datetime, account, book, transferEID, syear) VALUES
  ('shop-item', '20', 12, 40, 'Half-yearly', strftime('%s', '2023-08-31 11:00'), '', 'Home', 'G1', 1004),
  ('shop-payment', '10', 12, 40, 'Half-yearly', strftime('%s', '2023-08-31 11:00'), 'Bank', '', 'G1', 1004);
