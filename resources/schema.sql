-- The store of a new user: every table, in order, with the defaults older stores have too. Columns of these
-- tables are part of the interface to stores in the field: names keep their spelling, order and defaults.
-- The template that is copied at first run is built from this file.

CREATE TABLE account (
  eid INTEGER PRIMARY KEY,
  title TEXT DEFAULT '',
  password TEXT DEFAULT '',
  type TEXT DEFAULT '',
  beginBalance REAL DEFAULT 0.0,
  currency TEXT DEFAULT '',
  enabled INTEGER DEFAULT 1,
  weekStartsOn INTEGER DEFAULT 1,
  monthStartsOn INTEGER DEFAULT 1,
  note TEXT DEFAULT '',
  orderID INTEGER DEFAULT 0,
  deleted INTEGER DEFAULT 0,
  editDate REAL DEFAULT 0.0,
  familyUser TEXT DEFAULT '',
  budgetEnabled INTEGER DEFAULT 0,
  incomeEnabled INTEGER DEFAULT 1,
  totalBalance REAL DEFAULT 0.0,
  totalIncome REAL DEFAULT 0.0,
  totalExpense REAL DEFAULT 0.0,
  totalBudget REAL DEFAULT 0.0,
  ipid TEXT DEFAULT '',
  edit_ipid TEXT DEFAULT '',
  edit_count INTEGER DEFAULT 0,
  yearStartsOn INTEGER DEFAULT 1,
  includeFurtureDate INTEGER DEFAULT 0,
  kind INTEGER DEFAULT 0,
  beginDate REAL DEFAULT 0.0,
  endDate REAL DEFAULT 0.0,
  oldTitle TEXT DEFAULT '',
  expandOption TEXT DEFAULT '',
  isGroup INTEGER DEFAULT 0
);

CREATE TABLE category (
  pk INTEGER PRIMARY KEY,
  title TEXT DEFAULT '',
  parent TEXT DEFAULT '',
  usedTimes INTEGER DEFAULT 0,
  type INTEGER,
  account TEXT DEFAULT '',
  familyUser TEXT DEFAULT '',
  deleted INTEGER DEFAULT 0,
  editDate REAL DEFAULT 0.0,
  ipid TEXT DEFAULT '',
  edit_ipid TEXT DEFAULT '',
  edit_count INTEGER DEFAULT 0,
  orderID INTEGER DEFAULT 0,
  orderString TEXT DEFAULT '',
  oldTitle TEXT DEFAULT '',
  oldParent TEXT DEFAULT '',
  expandOption TEXT DEFAULT ''
);

CREATE TABLE categoryofbook (
  pk TEXT DEFAULT '',
  cate TEXT DEFAULT '',
  book TEXT DEFAULT '',
  cateOrder INTEGER DEFAULT 0,
  used INTEGER DEFAULT 0,
  enabled BLOB DEFAULT YES,
  editDate REAL DEFAULT '',
  edit_ipid TEXT DEFAULT ''
);

CREATE TABLE transactions (
  eid TEXT PRIMARY KEY,
  bid TEXT DEFAULT '',
  amount REAL DEFAULT 0.0,
  amount2 REAL DEFAULT 0.0,
  type INTEGER DEFAULT 0,
  note TEXT DEFAULT '',
  currency2 TEXT DEFAULT '',
  repeat TEXT DEFAULT '',
  repeat_end_date REAL DEFAULT 0.0,
  category TEXT DEFAULT '',
  subcategory TEXT DEFAULT '',
  vendor TEXT DEFAULT '',
  datetime REAL DEFAULT 0.0,
  syear INTEGER DEFAULT 0,
  smonth INTEGER DEFAULT 0,
  account TEXT DEFAULT '',
  transferEID TEXT DEFAULT '',
  barcode TEXT DEFAULT '',
  editDate REAL DEFAULT 0.0,
  deleted INTEGER DEFAULT 0,
  familyUser TEXT DEFAULT '',
  book TEXT DEFAULT '',
  paid INTEGER DEFAULT 1,
  needReimburse INTEGER DEFAULT 0,
  needNotify INTEGER DEFAULT 0,
  ipid TEXT DEFAULT '',
  edit_ipid TEXT DEFAULT '',
  edit_count INTEGER DEFAULT 0,
  repeat_seed TEXT DEFAULT '',
  sweek INTEGER DEFAULT 0,
  sday INTEGER DEFAULT 0,
  payDate REAL DEFAULT 0.0
);

CREATE TABLE photos (
  pid INTEGER PRIMARY KEY NOT NULL,
  eid TEXT DEFAULT '',
  photoFull TEXT DEFAULT '',
  photoLite TEXT DEFAULT '',
  datetime REAL DEFAULT 0.0,
  deleted INTEGER DEFAULT 0,
  familyUser TEXT DEFAULT '',
  edit_count INTEGER DEFAULT 0,
  ipid TEXT DEFAULT '',
  edit_ipid TEXT DEFAULT '',
  uploaded INTEGER DEFAULT 0,
  downloaded INTEGER DEFAULT 0
);

CREATE TABLE monivaSys (
  key TEXT DEFAULT '',
  value TEXT DEFAULT '',
  deleted INTEGER DEFAULT 0,
  editDate REAL DEFAULT 0.0,
  familyUser TEXT DEFAULT '',
  edit_count INTEGER DEFAULT 0,
  ipid TEXT DEFAULT '',
  edit_ipid TEXT DEFAULT ''
);

-- A new store needs none of the steps that bring older ones up to date.
INSERT INTO monivaSys (value, key) VALUES
('1', 'updateCategoryPK'),
('1', 'updateRepeatSeedTransaction'),
('1', 'clearWrongRecurringItem2'),
('1', 'updateNOCategoryTitle'),
('1', 'updateDataFiled202102'),
('1', 'fixWrongDeletedByClearDuplicateRecurringItem20210209'),
('1', 'updateDataFiled20210305'),
('1', 'clearDuplicateAccountWithSamePK'),
('1', 'fixWrongDeletedByClearRecurringItem20210412'),
('1', 'fixWrongDeletedByClearRecurringItem20220719');
