# Functions of at most `most` lines, from the first line of the signature to the closing brace. No
# parser: what opens a brace is told from the text before it, in the style that .clang-format gives.
# A lambda belongs to the function that it stands in; a table of values is no function.
BEGIN { most = 60 }

FNR == 1 {
  depth = inside = 0
  comment = 0
  raw = statement = ""
  delete kind
}

# The line without comments, and without what stands in quotes.
function code(line,    out, c, two, i, quote) {
  out = ""
  for (i = 1; i <= length(line); ++i) {
    if (raw != "") {  # in a raw string, which ends with `raw`
      c = index(substr(line, i), raw)
      if (c == 0) return out
      i += c + length(raw) - 2
      raw = ""
      continue
    }
    c = substr(line, i, 1)
    two = substr(line, i, 2)
    if (comment) {
      if (two == "*/") { comment = 0; ++i }
    } else if (two == "//") {
      return out
    } else if (two == "/*") {
      comment = 1
      ++i
    } else if (two == "R\"" && out !~ /[A-Za-z0-9_]$/) {
      quote = substr(line, i + 2)
      sub(/\(.*/, "", quote)
      raw = ")" quote "\""
      i += length(quote) + 2
    } else if (c == "\"" || (c == "'" && out !~ /[0-9A-Fa-f]$/)) {
      quote = c
      while (++i <= length(line) && (c = substr(line, i, 1)) != quote) if (c == "\\") ++i
      out = out "0"
    } else {
      out = out c
    }
  }
  return out
}

# What the brace after `text` opens: "scope" (namespace, class, linkage), "function", "member" (a
# value in a constructor's list, whose body is still to come) or "value".
function opens(text) {
  gsub(/\[\[[^]]*\]\]/, "", text)
  sub(/^ *template *<.*> *(class|struct|union) /, "class ", text)
  if (text ~ /^ *(inline )?(namespace|class|struct|union|enum|extern 0)( |$)/ && text !~ /\) *[a-z]*$/) return "scope"
  if (text ~ /\).*:.*[A-Za-z0-9_>]$/) return "member"
  if (text ~ /operator *[^ (]*=/) return "function"
  if (text ~ /= *\[/) return "function"
  while (sub(/\([^()]*\)/, "@", text)) {}
  if (text ~ /=|\(/) return "value"  # an open bracket: an argument
  return text ~ /@/ ? "function" : "value"
}

function opened() {
  ++depth
  if (inside > 0) return
  kind[depth] = opens(statement)
  if (kind[depth] == "scope") { statement = ""; return }
  inside = depth
}

function closed() {
  if (inside == depth) {
    inside = 0
    if (kind[depth] == "function" && FNR - first + 1 > most) {
      print FILENAME ":" first ": the function is " FNR - first + 1 " lines long, more than " most
    }
    statement = kind[depth] == "member" ? statement "0" : ""
  } else if (inside == 0) {
    statement = ""
  }
  if (depth > 0) --depth
}

{
  line = continued || $0 ~ /^[ \t]*#/ ? "" : code($0)  # a directive is no statement
  continued = (continued || $0 ~ /^[ \t]*#/) && $0 ~ /\\$/
  if (inside == 0 && line ~ /^[ \t]*(public|private|protected):/) line = ""
  for (n = 1; n <= length(line); ++n) {
    c = substr(line, n, 1)
    if (c == "{") opened()
    else if (c == "}") closed()
    else if (inside > 0) continue
    else if (c == ";") statement = ""
    else if (statement != "" || c !~ /[ \t]/) {
      if (statement == "") first = FNR
      statement = statement c
    }
  }
  if (inside == 0 && statement != "") statement = statement " "
}
