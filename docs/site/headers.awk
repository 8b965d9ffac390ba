# The headers' comments are plain; this makes Doxygen's of them. A comment is
# about the declarations that follow it up to the next blank line or comment:
# when there are several, each gets it. A line such as "// ---- motion ----" begins
# a chapter of a class, which Doxygen calls a member group. Columns in a comment stay
# columns. Lines keep their numbers, but for those that comments get.

# A line that ends what a comment is about.
function ends_group(line) {
  return line ~ /^ *$/ || line ~ /^ *\/[\/*]/ || line ~ /^#/ || line ~ /^ *(public|private|protected):/ || line ~ /^ *}/
}

# What stands alone behind its comment: types, templates, macros.
function stands_alone(line) {
  return line ~ /^ *(class|struct|enum|union|namespace|template|typedef|extern|using)[ <]/ || line ~ /^#/
}

function with_trailing_comment(line) {
  if (line ~ /NOLINT/) return line
  if (match(line, /[;,{)}0-9A-Z_] +\/\/ /)) {
    return substr(line, 1, RSTART) "  ///< " substr(line, RSTART + RLENGTH)
  }
  if (match(line, /[;,{)}0-9A-Z_] +\/\* /)) {
    return substr(line, 1, RSTART) "  /**< " substr(line, RSTART + RLENGTH)
  }
  return line
}

# The comment stands before the first declaration of a group; the others get it
# in their own line.
function flush_group(    i, begins) {
  for (i = 1; i <= lines; ++i) {
    if (begins) printf "/** %s */ ", comment
    print with_trailing_comment(group[i])
    begins = group[i] ~ declaration_end
  }
  lines = 0
  collecting = 0
}

# The line by which a user includes this header.
function include_line(    path) {
  path = FILENAME
  sub(/^(.*\/)?include\//, "", path)
  return "@code{.cpp}\n#include <" path ">\n@endcode"
}

# The first comment of a file is about the file.
function begin_file() {
  if ($0 ~ /^\/\*/) { sub(/^\/\*/, "/** @file\n" include_line() "\n *"); in_block = 1; return }
  print "/** @file\n" include_line() "\n*/"
  print $0 ~ /^\/\/ / ? "/// @file" : ""
}

# The lines between a chapter's title and the next blank line tell about the
# chapter; where a declaration follows at once they tell about that.
function begin_chapter(title) {
  gsub(/^ *\/\/ -+ | -+$/, "", title)
  printf "%s/** @name %s", end_chapter(), toupper(substr(title, 1, 1)) substr(title, 2)
  chapter_begins = 1
  intro_lines = 0
}

function begin_chapter_body(    i, is_intro) {
  is_intro = /^ *$/
  if (!is_intro) printf " */ /**@{*/"
  print ""
  for (i = 1; i <= intro_lines; ++i) {
    if (is_intro) sub(/^ *\/\/ ?/, "", intro[i])
    else { sub(/\/\//, "///", intro[i]); remember(intro[i], i == 1) }
    print intro[i]
  }
  chapter_begins = 0
  in_chapter = 1
  if (is_intro) print "*/ /**@{*/"
  else after_comment = intro_lines > 0
}

function end_chapter() {
  if (!in_chapter) return ""
  in_chapter = 0
  return "/**@}*/ "
}

# Indented lines that are no list are columns; a number with a full stop begins no
# list; "Threads. A client ..." begins a paragraph about threads.
function print_comment_line(line,    text) {
  text = line
  sub(/^ *\/\/\//, "", text)
  if (text ~ /^ *$/ || text ~ /^ [^ ]/) end_columns()
  if (text ~ /^ [^ ]/) in_list = text ~ /^ - /
  else if (text ~ /^ +- /) in_list = 1
  else if (text ~ /^   / && !in_list && !in_columns) { print "/// ```{.unparsed}"; in_columns = 1 }
  sub(/\/\/\/ [0-9]+\. /, "&\001", line)
  sub(/\. \001/, "\\. ", line)
  if (after_empty && line ~ /^ *\/\/\/ [A-Z][a-z-]+\. [A-Z]/) { sub(/\/\/\/ /, "/// **", line); sub(/\. /, ".** ", line) }
  after_empty = text ~ /^ *$/
  print line
}

function end_columns() {
  if (in_columns) print "/// ```"
  in_columns = in_list = 0
}

# Keeps the text of the comment for the further declarations of its group.
function remember(line, is_first) {
  sub(/^ *(\/\/\/|\/\*\*|\*)? ?/, "", line)
  sub(/ *\*\/$/, "", line)
  comment = is_first ? line : comment " " line
}

BEGIN { declaration_end = "[;}]( *\\/[\\/*].*)?$" }

FNR == 1 { begin_file() }

in_block {
  remember($0, 0)
  print
  if (/\*\//) { in_block = 0; after_comment = 1 }
  next
}

!/^ *\/\// { end_columns() }

collecting && ends_group($0) { flush_group() }

/^ *\/\/ ---- / { begin_chapter($0); after_comment = 0; next }

chapter_begins && /^ *\/\// { intro[++intro_lines] = $0; next }

chapter_begins {
  begin_chapter_body()
  if (/^ *$/) next
}

in_chapter && /^( ?(private|protected|public):|};)$/ { printf "%s", end_chapter() }

/^ *\/\/( |$)/ {
  sub(/\/\//, "///")
  remember($0, !after_comment)
  print_comment_line($0)
  after_comment = 1
  next
}

/^ *\/\*/ {
  sub(/\/\*/, "/**")
  remember($0, 1)
  print
  if (/\*\//) after_comment = 1
  else in_block = 1
  next
}

/^ *$/ { after_comment = 0 }

after_comment && !stands_alone($0) && !ends_group($0) { collecting = 1 }

{ after_comment = 0 }

collecting {
  group[++lines] = $0
  next
}

{ print with_trailing_comment($0) }

END { if (collecting) flush_group() }
