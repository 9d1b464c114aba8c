-- The indexes of the store and the planner's figures for them. docs/schema.md says which query each serves.
-- The figures are fixed on purpose and belong to the set: the empty text dominates repeat_seed and transferEID,
-- so figures counted from a real store mislead the planner. Never run ANALYZE or PRAGMA optimize on a store.
CREATE INDEX IF NOT EXISTS tx_book     ON transactions(book, type, datetime, paid, amount, deleted, eid);
CREATE INDEX IF NOT EXISTS tx_account  ON transactions(account, datetime, type, paid, amount, deleted, book, category, syear, eid);
CREATE INDEX IF NOT EXISTS tx_date     ON transactions(datetime);
CREATE INDEX IF NOT EXISTS tx_type     ON transactions(type, datetime);
CREATE INDEX IF NOT EXISTS tx_vendor   ON transactions(vendor, datetime, type, book, paid, amount, deleted, eid);
CREATE INDEX IF NOT EXISTS tx_category ON transactions(category, datetime, type, book, paid, amount, deleted, eid);
CREATE INDEX IF NOT EXISTS tx_edit     ON transactions(editDate);
CREATE INDEX IF NOT EXISTS tx_transfer ON transactions(transferEID);
CREATE INDEX IF NOT EXISTS tx_seed     ON transactions(repeat_seed, datetime);
CREATE INDEX IF NOT EXISTS tx_unpaid   ON transactions(paid, datetime) WHERE paid = 0;
CREATE INDEX IF NOT EXISTS tx_removed  ON transactions(deleted, editDate) WHERE deleted = 1;
CREATE INDEX IF NOT EXISTS tx_foreign  ON transactions(book, type, datetime, currency2, amount2) WHERE currency2 != '';
CREATE INDEX IF NOT EXISTS cat_key     ON category(oldTitle);
CREATE INDEX IF NOT EXISTS cat_parent  ON category(parent, type);
CREATE INDEX IF NOT EXISTS cat_title   ON category(title, type);
CREATE INDEX IF NOT EXISTS cob_cate    ON categoryofbook(cate, book);
CREATE INDEX IF NOT EXISTS photo_eid   ON photos(eid);
CREATE INDEX IF NOT EXISTS photo_full  ON photos(photoFull);
CREATE INDEX IF NOT EXISTS photo_time  ON photos(datetime);
CREATE INDEX IF NOT EXISTS sys_key     ON monivaSys(key);
ANALYZE sqlite_schema;
DELETE FROM sqlite_stat1;
INSERT INTO sqlite_stat1 VALUES
('transactions','tx_book','100000 33000 8000 2 2 1 1 1'),
('transactions','tx_account','100000 7000 2 1 1 1 1 1 1 1 1'),
('transactions','tx_type','100000 15000 2'),
('transactions','tx_vendor','100000 7000 2 1 1 1 1 1 1'),
('transactions','tx_category','100000 5000 2 1 1 1 1 1 1'),
('transactions','tx_edit','100000 1'),
('transactions','tx_date','100000 2'),
('transactions','tx_transfer','100000 5000'),
('transactions','tx_seed','100000 60000 2'),
('transactions','tx_unpaid','1000 1000 1'),
('transactions','tx_removed','1000 1000 1'),
('transactions','tx_foreign','2000 700 350 1 1 1'),
('transactions','sqlite_autoindex_transactions_1','100000 1'),
('category','cat_key','400 1'),
('category','cat_parent','400 60 50'),
('category','cat_title','400 2 1'),
('categoryofbook','cob_cate','150 3 1'),
('photos','photo_eid','2000 1'),
('photos','photo_full','2000 1'),
('photos','photo_time','2000 1'),
('monivaSys','sys_key','80 1');
ANALYZE sqlite_schema;
