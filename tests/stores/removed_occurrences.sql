-- What clean-ups of earlier versions left of series. A record called back-... is one that was removed by mistake,
-- stay-... one that has to stay as it is; the word behind tells why.

CREATE TEMP TABLE day (d, at REAL);
INSERT INTO day SELECT value, strftime('%s', '2020-03-' || printf('%02d', value) || ' 08:00') + 0.0
  FROM (WITH RECURSIVE n(value) AS (SELECT 1 UNION ALL SELECT value + 1 FROM n WHERE value < 28) SELECT value FROM n);

INSERT INTO account (title, oldTitle, kind, type, currency, incomeEnabled, totalBalance) VALUES
  ('Cash', 'Cash', 1, '_SavingAccount', 'EUR', 1050, -5), ('Bank', 'Bank', 1, '_SavingAccount', 'EUR', 1050, 0);

INSERT INTO transactions (eid, type, syear, repeat, amount, datetime, deleted, ipid, payDate, sday) VALUES
  ('going', 85, 12, 'Daily', 5, strftime('%s', '2024-03-01'), 0, '', 0, 0),
  ('ended', 85, 12, 'Daily', 5, strftime('%s', '2021-03-01'), 1, 'stopRepeat by user', strftime('%s', '2020-03-01'), 1),
  ('removed', 85, 12, 'Daily', 5, strftime('%s', '2021-03-01'), 3, '', 0, 0),
  ('fresh', 85, 12, 'Monthly', 5, strftime('%s', '2024-03-31'), 0, '', NULL, 0),
  ('undated', 85, 12, 'Monthly', 5, NULL, 0, '', 0, 0);

INSERT INTO transactions (eid, bid, type, amount, account, repeat_seed, deleted, ipid, datetime, editDate, barcode)
  SELECT column1, '20', 12, 5, 'Cash', column2, column4, column5, at, column6, 'Europe/Berlin' FROM day JOIN (VALUES
    ('back-alone', 'going', 5, 3, 'delete by fixDuplicateRecurringItem 583', 10),
    ('stay-older', 'going', 6, 3, 'delete by fixDuplicateRecurringItem 583', 10),
    ('back-newer', 'going', 6, 3, 'delete by fixDuplicateRecurringItem 580', 11),
    ('served', 'going', 7, 0, '', 10),
    ('stay-beside-live', 'going', 7, 3, 'delete by fixDuplicateRecurringItem 583', 11),
    ('deleted', 'going', 8, 1, '', 10),
    ('stay-beside-deleted', 'going', 8, 3, 'delete by fixDuplicateRecurringItem 582', 11),
    ('stay-other-reason', 'going', 9, 3, 'delete with deletedRepeatTransaction on 2020-04-01', 10),
    ('stay-number', 'going', 10, 3, 'delete by fixDuplicateRecurringItem 5830', 10),
    ('stay-in-bulk', 'going', 11, 4, 'delete by fixDuplicateRecurringItem 583', 10),
    ('stay-moved', 'going', 20, 3, 'delete by fixDuplicateRecurringItem 583', 10),
    ('stay-series-removed', 'removed', 5, 3, 'delete by fixDuplicateRecurringItem 583', 10),
    ('stay-series-unknown', 'nothing', 5, 3, 'delete by fixDuplicateRecurringItem 583', 10),
    ('back-of-ended', 'ended', 5, 3, 'delete by fixDuplicateRecurringItem 581', 10),
    ('first-668', 'going', 12, 3, 'delete by fixDuplicateRecurringItem 668', 10),
    ('first-670', 'ended', 13, 3, 'delete by fixDuplicateRecurringItem 670', 10),
    ('second-758', 'going', 14, 3, 'delete with clearDuplicateRecurringItemFor 758', 10)) ON d = column3;

-- A transfer comes back with both sides or not at all; a cart with all its rows.
INSERT INTO transactions (eid, bid, type, amount, account, vendor, repeat_seed, transferEID, deleted, ipid, datetime, editDate)
  SELECT column1, column2, column3, 5, column4, '', column5, column6, 3, column7, at, 10 FROM day JOIN (VALUES
    ('back-side-a', '10', 33, 'Cash', 'going', 'T1', 'delete by fixDuplicateRecurringItem 582', 15),
    ('back-side-b', '10', 23, 'Bank', 'going', 'T1', 'delete by fixDuplicateRecurringItem 582', 15),
    ('stay-half-a', '10', 33, 'Cash', 'going', 'T2', 'delete by fixDuplicateRecurringItem 582', 16),
    ('stay-half-b', '10', 23, 'Bank', 'going', 'T2', 'delete by clear account data on 2021-01-01', 16),
    ('back-item', '20', 12, '', 'going', 'G1', 'delete by fixDuplicateRecurringItem 583', 17),
    ('back-payment', '10', 12, 'Cash', '', 'G1', 'delete by fixDuplicateRecurringItem 583', 17)) ON d = column8;

-- Occurrences without a date, and stray halves of transfers.
INSERT INTO transactions (eid, type, amount, paid, repeat_seed, datetime, note) VALUES
  ('undated-pending', 12, 7, 0, 'going', NULL, 'Ann''s'), ('stay-undated-paid', 12, 7, 1, 'going', NULL, ''),
  ('stay-undated-alone', 12, 7, 0, '', NULL, '');
INSERT INTO transactions (eid, bid, type, amount, paid, repeat_seed, transferEID, datetime, deleted, ipid) VALUES
  ('stray', '10', 33, 9, 0, 'moves', 'S1', strftime('%s', '2031-05-05'), 0, ''),
  ('stray-partner', '10', 23, 9, 0, 'moves', 'S1', strftime('%s', '2031-05-05'), 3, ''),
  ('stay-this-year', '10', 33, 9, 0, 'moves', 'S2', strftime('%s', '2024-05-05'), 0, ''),
  ('this-year-partner', '10', 23, 9, 0, 'moves', 'S2', strftime('%s', '2024-05-05'), 3, ''),
  ('stay-cleared', '10', 33, 9, 0, 'moves', 'S3', strftime('%s', '2031-05-05'), 0, ''),
  ('cleared-partner', '10', 23, 9, 0, 'moves', 'S3', strftime('%s', '2031-05-05'), 3, 'delete by clear account data on x'),
  ('stay-whole', '10', 33, 9, 0, 'moves', 'S4', strftime('%s', '2031-05-05'), 0, ''),
  ('whole-partner', '10', 23, 9, 0, 'moves', 'S4', strftime('%s', '2031-05-05'), 0, '');
DROP TABLE day;
