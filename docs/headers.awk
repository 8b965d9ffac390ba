# The headers' comments are plain; this makes Doxygen's of them. A comment is
# about the declarations that follow it up to the next blank line or comment:
# when there are several, each gets it.

# A line that ends what a comment is about.
function ends_group(line) {
  return line ~ /^ *$/ || line ~ /^ *\/[\/*]/ || line ~ /^#/ || line ~ /^ *(public|private|protected):/ || line ~ /^ *}/
}

# What stands alone behind its comment: types, templates, macros.
function stands_alone(line) {
  return line ~ /^ *(class|struct|enum|union|namespace|template|typedef|extern|using)[ <]/ || line ~ /^#/
}

function with_trailing_comment(line) {
  if (match(line, /[;,{)}0-9A-Z_] +\/\/ /)) {
    return substr(line, 1, RSTART) "  ///< " substr(line, RSTART + RLENGTH)
  }
  if (match(line, /[;,{)}0-9A-Z_] +\/\* /)) {
    return substr(line, 1, RSTART) "  /**< " substr(line, RSTART + RLENGTH)
  }
  return line
}

function flush_group(    i) {
  if (declarations > 1) print indent "/// @{"
  for (i = 1; i <= lines; ++i) print with_trailing_comment(group[i])
  if (declarations > 1) print indent "/// @}"
  lines = declarations = 0
  collecting = 0
}

# The first comment of a file is about the file.
function begin_file() {
  if ($0 ~ /^\/\/ /) print "/// @file"
  else if ($0 ~ /^\/\*/) { sub(/^\/\*/, "/** @file\n *"); in_block = 1 }
  else { print "/// @file"; print "" }
}

FNR == 1 { begin_file() }

in_block {
  print
  if (/\*\//) { in_block = 0; after_comment = 1 }
  next
}

collecting && ends_group($0) { flush_group() }

/^ *\/\/ ---- / { print; after_comment = 0; next }

/^ *\/\/( |$)/ {
  sub(/\/\//, "///")
  indent = $0
  sub(/[^ ].*/, "", indent)
  print
  after_comment = 1
  next
}

/^ *\/\*/ {
  indent = $0
  sub(/[^ ].*/, "", indent)
  sub(/\/\*/, "/**")
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
  if ($0 ~ /[;}]( *\/[\/*].*)?$/) ++declarations
  next
}

{ print with_trailing_comment($0) }

END { if (collecting) flush_group() }
