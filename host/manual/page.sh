#!/bin/sh
# page.sh LOWDOWN SOURCE PAGE DATE VERSION: writes the manual page FOLDER/NAME.SECTION from Markdown, whose
# first line is its title.
set -eu
lowdown=$1 date=$4 version=$5
exec <"$2" >"$3.new"
page=$(basename "${3%.*}") section=${3##*.}
read -r title
text=$(cat)

printf "'\\\\\" t\n.TH %s %s %s \"clockhost %s\"\n.ad l\n.SH NAME\n%s \\- %s of the clock host\n.SH DESCRIPTION\n" \
  "$(printf %s "$page" | tr "[:lower:]" "[:upper:]" | sed 's/-/\\-/g')" "$section" "$date" "$version" \
  "$(printf %s "$page" | sed 's/-/\\-/g')" "$(printf %s "${title#\# }" | tr "[:upper:]" "[:lower:]")"
# Removes the page's first heading, paragraph marks after headings, boxes around tables, and fonts and escapes
# that some formatters lack. A table's last columns share the width of the line.
printf '%s\n' "$text" | "$lowdown" -tman --nroff-nolinks --nroff-no-groff >"$3.body"
sed \
  -e '1{/^\.PP$/d;}' -e 's/\\fC/\\fB/g' -e "s/\\\\U'2026'/.../g" \
  -e '/^\.S[HS]/{n;/^\.[LP]P$/d;n;/^\.[LP]P$/d;}' \
  -e '/^tab(|) expand allbox;$/{s/.*/tab(|);/;n;n;s/ \([lr]\)/ \1x/g;}' "$3.body"
rm "$3.body"
mv "$3.new" "$3"
