# Who may include whom. Each file of a room is held against the list of rooms, from the ground floor
# up; tools, tests, benchmarks and samples stand outside and may look at anything.

BEGIN {
  rooms = split("platform settings ports firmware link programmer widgets wizard webupdate pages app flash", list, " ")
  for (i = 1; i <= rooms; ++i) floorOf[list[i]] = i
  floorOf["linklib"] = floorOf["mount"] = 0  # what they may include is told one by one
  withQt = "^(platform/qt|widgets|wizard/window|webupdate/window|pages|app)/"
  forBothFaces = "^app/(ProgramSettings|TrustedKeys)\\.h$"  # of a target of its own, without Qt
  withSystem = "^(platform/(posix|windows)|tests|benchmarks)/"
  ofSystem = "^(unistd|fcntl|termios|pty|poll|dlfcn|dirent|pwd|grp|sched|signal|spawn|pthread|netdb|strings|libgen|glob|link|elf)\\.h$" \
          "|^(sys|linux|net|netinet|arpa|asm)/|^(windows|win[a-z0-9]+|ws2tcpip|setupapi|bcrypt|io|conio|process|direct|shlobj|shellapi)\\.h$"
}

# A public header's place is the folder that holds its include directory.
BEGIN {
  for (i = 1; i < ARGC; ++i) {
    path = ARGV[i]
    sub(/^\.\//, "", path)
    at = index(path, "/include/")
    if (at > 0) placeOf[substr(path, at + 9)] = substr(path, 1, at)
  }
}

FNR == 1 {
  file = FILENAME
  sub(/^\.\//, "", file)
  room = file
  sub(/\/.*/, "", room)
}

function find(what) { print FILENAME ":" FNR ": " what }

function top(header) {
  if (header !~ /\//) return ""
  sub(/\/.*/, "", header)
  return header
}

# True when a file of `room` may include `header`, which lies in the room `other`.
function allowed(other, header) {
  if (other == room) return 1
  if (room == "linklib") return other == "ports" || other == "platform"
  if (room == "mount") return other == "platform" || placeOf[header] == "linklib/frames/"
  return (other in floorOf) && floorOf[other] > 0 && floorOf[other] < floorOf[room]
}

function isQt(header) {
  if (header ~ forBothFaces) return 0
  return header ~ /^Q[A-Za-z]+(\/|$)/ || header ~ /^q[a-z]+\.h$/ || placeOf[header] ~ withQt
}

/^[ \t]*#[ \t]*include[ \t]*["<]/ {
  header = $0
  sub(/^[^"<]*["<]/, "", header)
  quoted = $0 ~ /^[^<]*"/
  sub(/[">].*/, "", header)
  if (("/" header "/") ~ /\/\.\.\//) find("includes " header " by a path out of its folder")
  if (header ~ ofSystem && file !~ withSystem) find("includes " header ", which is for platform/posix and platform/windows alone")
  if (!(room in floorOf)) next
  other = top(header)
  if (other != "" && (quoted || other in floorOf) && !allowed(other, header)) {
    find(room " includes " header ", which does not stand above it")
  }
  if (file !~ withQt && isQt(header)) find("includes " header ", though this folder has no Qt")
}
