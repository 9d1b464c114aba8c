#!/usr/bin/env bash
# Keeps the catalogues of resources/texts up to date with the texts of the sources.
#   texts.sh           takes new texts into the catalogues and drops those nothing uses; what is missing is listed
#   texts.sh --check   changes nothing; fails when a text is untranslated, or its translation has other slots
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
export LC_ALL=C
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The calls that take a text, with the place of the text among their arguments.
keywords=(text count:1,2 localized:1 translate:1 refuse refused notUnderstood phrase toTranslate addNotice unknown
  problem:2 checkTitle:2 wellFormed:2 asTyped:2 addSetting:4 takesName:2 named:3 book:3
  add_option:3 add_flag:3 set_version_flag:3 set_help_flag:2)
# Without the heading, which would be there twice; with --omit-header letters beyond ASCII get lost.
entries() { sed '1,/^$/d'; }
calls() {
  find src -name '*.cpp' -o -name '*.h' | sort |
    xargs xgettext --language=C++ --from-code=UTF-8 --no-location -o - -k "${keywords[@]/#/--keyword=}" | entries
}

# The tables of help texts have no calls: all its texts but the paths and the example commands.
table() {
  perl -0pe 's/\{"(moniva|source) ([^"\\]|\\.)*",\s*/{/g; s/\{"[a-z -]*",\s*/{/g; s/\{"[^"]*",\s*(?="[^{}]*"\s*\})/{/g; s/""/0/g' \
    src/ui/cli/command_texts*.cpp | sed '/^#include/d' >"$work/table.cpp"
  xgettext --language=C++ --from-code=UTF-8 --no-location --extract-all -o - "$work/table.cpp" | entries
}

{
  printf 'msgid ""\nmsgstr ""\n"Content-Type: text/plain; charset=UTF-8\\n"\n\n'
  calls
  echo
  table
} >"$work/all.pot"
msguniq --no-wrap -o "$work/moniva.pot" "$work/all.pot"

# Prints what is wrong with a catalogue: texts without a translation, slots that are not those of the English text.
faults() {
  msgattrib --no-obsolete --no-wrap "$1" | awk -v file="$2" '
    function slots(text,    list, number, slot, form, n, i, all) {
      gsub(/\{\{|\}\}/, "", text)
      n = 0
      while (match(text, /\{[^{}]*\}/)) {
        slot = substr(text, RSTART + 1, RLENGTH - 2)
        text = substr(text, RSTART + RLENGTH)
        form = ""
        if (i = index(slot, ":")) { form = substr(slot, i); slot = substr(slot, 1, i - 1) }
        if (slot == "") slot = n
        list[n++] = slot form
      }
      if (text ~ /[{}]/) return "unsound"
      # Each slot once, in order: a translation may fill them in another order, or one of them twice.
      all = ""
      for (number = 0; number < 20; ++number)
        for (i = 0; i < n; ++i)
          if (list[i] + 0 == number && index(all, " " list[i] " ") == 0) all = all " " list[i] " "
      return all
    }
    function told(what) { print file ": " what ": \"" english "\""; }
    function entry(    i) {
      if (english == "") return
      for (i in said) {
        if (said[i] == "") { told("not translated"); break }
        if (slots(said[i]) != slots(plural == "" ? english : plural)) told("other slots in \"" said[i] "\"")
      }
      if (fuzzy) told("only guessed")
    }
    function quoted(line) { sub(/^[^"]*"/, "", line); sub(/"$/, "", line); return line }
    /^#, .*fuzzy/ { fuzzy = 1 }
    /^msgid /        { english = quoted($0); at = "english" }
    /^msgid_plural / { plural = quoted($0); at = "plural" }
    /^msgstr/        { place = $1; said[place] = quoted($0); at = "said" }
    /^"/ {
      if (at == "english") english = english quoted($0)
      else if (at == "plural") plural = plural quoted($0)
      else said[place] = said[place] quoted($0)
    }
    /^$/ { entry(); english = plural = at = ""; fuzzy = 0; delete said }
    END { entry() }'
}

bad=0
for catalogue in resources/texts/*.po; do
  msgmerge --quiet --no-fuzzy-matching --no-wrap --sort-output -o "$work/merged.po" "$catalogue" "$work/moniva.pot"
  msgattrib --no-obsolete --no-wrap -o "$work/new.po" "$work/merged.po"
  if [ "${1:-}" = --check ]; then
    faults "$work/new.po" "$catalogue" >"$work/faults"
    msgfmt --check-format -o /dev/null "$catalogue" 2>>"$work/faults" || true
    if [ -s "$work/faults" ]; then
      cat "$work/faults" >&2
      bad=1
    fi
  else
    cp "$work/new.po" "$catalogue"
    faults "$catalogue" "$catalogue" || true
  fi
done
exit $bad
