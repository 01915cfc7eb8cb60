# Rows of the table of figures, out of what Google Benchmark prints as JSON. `where` names the platform.

/"name":/ {
  name = $0
  gsub(/^.*: "|",?$/, "", name)
  if (name ~ /_(mean|stddev|cv)$/) name = ""
  sub(/\/(iterations|manual_time|real_time).*|_median$/, "", name)
}
/"error_message":/ { failed = failed name ": " $0 "\n" }
/: [-+.0-9e]+,?$/ {
  key = $1
  gsub(/[":]/, "", key)
  value[name, key] = $2 + 0
}

# Neither a figure that is missing nor one that is no number may pass for a good one.
function row(what, ratio, bound, atLeast) {
  printf("%-58s %-10s %8.3f %8s %5.2f %s\n", what, where, ratio, atLeast ? "at least" : "at most", bound,
         (ratio > 0 && (atLeast ? ratio >= bound : ratio <= bound)) ? "" : "missed")
}

function has(name) { return (name, "real_time") in value }
function wall(name) { return value[name, "real_time"] }
function cpu(name) { return value[name, "cpu_time"] }
function share(name, other) { return other > 0 ? name / other : 0 }

function windows(    bare) {
  bare = wall("bench-bare-window")
  row("start to first page painted / of a bare window", share(wall("bench-first-page"), bare), where == "xcb" ? 1.45 : 1.6)
  row("peak memory then / of a bare window", share(value["bench-first-page", "peak"], value["bench-bare-window", "peak"]), 1.3)
  row("tarnwick-flash ports, start to end / first page painted", share(wall("tarnwick-flash"), wall("bench-first-page")), 0.3)
  row("peak memory of that / of the window's first page", share(value["tarnwick-flash", "peak"], value["bench-first-page", "peak"]), 0.4)
  row("64 KB package listed, loaded, shown / bare window start", share(wall("package"), bare), 0.1)
  row("2,000 packages of 24 KB on the page: seconds until it can be used", wall("many") / 1000, 0.5)
  row("the same: seconds until all are judged", wall("judged") / 1000, 2)
  row("block of a programming run / idle round", share(wall("block"), value["idle-round", "cpu_time"]), 15)
  row("word of a verify run / idle round", share(wall("word"), value["idle-round", "cpu_time"]), 10)
}

# A figure that stands beside another one, without a bound.
function beside(what, ratio) { printf("%-58s %-10s %8.3f\n", "  " what, where, ratio) }

function line(    speeds, i, speed, words, name) {
  split("19200 115200 921600", speeds, " ")
  for (i = 1; i <= 3; ++i) {
    for (words = 1; words <= 2; ++words) {
      name = "Program/" speeds[i] "/" (speeds[i] > 19200 ? 16128 : 2016) "/" words
      row("image in blocks of " words " at " speeds[i] " baud / a bare loop", value[name, "bare"],
          speeds[i] > 115200 ? 0.90 : 0.97, 1)
      beside("the same / what the line carries", value[name, "line"])
      beside("the same / the bare payload", value[name, "payload"])
    }
  }
  row("blocks of 1 at 19200 baud / by the first version's frames", value["FirstVersion", "times"], 1.35, 1)
  row("reopening a mount that was closed, at 115200 baud / 0.2 s", wall("Reopen/115200") / 1e9 / 0.2, 1)
  split("9600 19200 57600 115200", speeds, " ")
  for (i = 1; i <= 4; ++i) {
    speed = speeds[i]
    row("reading at " speed " baud / what the line carries", value["Read/" speed, "median"], speed > 57600 ? 0.93 : 0.97, 1)
  }
  row("word by word at 19200 baud / an exchange a word", value["Words/19200", "times"], 7, 1)
  row("word by word at 19200 baud / raw line", value["Words/19200", "share"], 0.7, 1)
  row("requests on an unpaced line / of a bare loop", value["Unpaced", "share"], 0.6, 1)
}

function verify() {
  row("verify of 4 K words at 19200 baud / its payload", value["Verify", "payload"], 1.4)
  beside("the same with an exchange for each word", value["Verify", "payload_alone"])
}

function web() {
  row("10 MB saved: curl / with progress after each 1024 bytes", share(wall("Curl/10485760"), wall("Client/10485760")), 0.5, 1)
  row("60 MB saved: curl / with progress after each 1024 bytes", share(wall("Curl/62914560"), wall("Client/62914560")), 0.35, 1)
  row("100 KB package, click to file / of a curl process", share(wall("Click/100000"), wall("Curl/100000")), 4)
  row("longest time without painting in a download, of 50 ms", value["Painting/62914560", "longest"] / 0.05, 1)
  row("longest time without painting in a stall, of 50 ms", value["PaintingStalled/1048576", "longest"] / 0.05, 1)
}

function packages(    small, large) {
  row("64 MB: srec_cat / qalinfo", share(wall("srec_cat/64MB"), wall("qalinfo/64MB")), 20, 1)
  row("64 MB: objcopy / qalinfo", share(wall("objcopy/64MB"), wall("qalinfo/64MB")), 7, 1)
  row("1 MB: srec_cat / qalinfo", share(wall("srec_cat/1MB"), wall("qalinfo/1MB")), 8, 1)
  row("1 MB: qalinfo with its remarks / the image alone", share(wall("remarks/1MB"), wall("qalinfo/1MB")), 3)
  row("1 MB: qalmake of four hex files / qalinfo", share(wall("qalmake/1MB"), wall("qalinfo/1MB")), 3)
  row("a 64 KB image: srec_cat / qalinfo", share(wall("srec_cat/image"), wall("qalinfo/image")), 1, 1)
  row("a 64 KB image: objcopy / qalinfo", share(wall("objcopy/image"), wall("qalinfo/image")), 1, 1)
  row("a 64 KB image: python3-intelhex / qalinfo", share(wall("intelhex/image"), wall("qalinfo/image")), 1, 1)
  small = 65536
  large = 268435456
  row("peak memory of qalinfo / a file of 256 MB", share(value["memory", "peak"], large), 3)
  row("64 KB: scan for line ends / load", share(cpu("scan/" small), cpu("load/" small)), 0.125, 1)
  row("64 MB: scan for line ends / load", share(cpu("scan/67108864"), cpu("load/67108864")), 0.125, 1)
  row("256 MB: scan for line ends / load", share(cpu("scan/" large), cpu("load/" large)), 0.125, 1)
  row("a byte's load at 256 MB / at 64 KB", share(cpu("load/" large) / large, cpu("load/" small) / small), 1.25)
  row("16 MB with 1,000 devices that want none / with 1", share(cpu("others:1000/16777216"), cpu("others:1/16777216")), 1.1)
}

# Milliseconds a package and doubling of a list of `count` of them.
function step(name, count) { return wall(name "/" count) / (count * log(count)) }

function catalogue() {
  row("catalogue of 10,000: step of n log n / at 100", share(step("Listed", 10000), step("Listed", 100)), 1)
  row("the same, shown", share(step("Shown", 10000), step("Shown", 100)), 1)
  row("catalogue of 10,000 merged, sorted, shown: seconds", wall("Shown/10000") / 1000, 0.5)
  row("catalogue of 100,000, the most that is shown: seconds", wall("ShownMost") / 1000, 1)
}

END {
  if (failed) {
    printf("%s", failed)
    exit 1
  }
  if (has("block")) windows()
  if (has("Unpaced")) line()
  if (has("Verify")) verify()
  if (has("Click/100000")) web()
  if (has("qalinfo/image")) packages()
  if (has("Listed/100")) catalogue()
}
