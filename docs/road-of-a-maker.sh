#!/usr/bin/env bash
# The road of a maker: from the hex files of a compiler to a signed package on an update site, and from there into
# a mount. Each step is one command; read them from top to bottom. The tests run this file as it stands.
#
#   docs/road-of-a-maker.sh BIN PORTABLE
#     BIN       the folder with qalmake, qalinfo, tarnwick-site and tarnwick-mount: build/release/bin
#     PORTABLE  the folder with Tarnwick and tarnwick-flash: build/release/portable
#
# All of it happens in a folder that goes at the end. Ends with 77 where there is no nginx to serve the site.
set -euo pipefail
bin=$(realpath "$1") portable=$(realpath "$2")
nginx=$(PATH=$PATH:/usr/sbin command -v nginx) || { echo "SKIPPED: nginx is not installed."; exit 77; }
cd "$(mktemp -d)"
trap 'kill $(jobs -p) 2>/dev/null; wait; rm -rf "$PWD"' EXIT
step() { printf '\n== %s\n' "$*"; }

step "1. What a compiler gives: a hex file for each motor, with configuration words elsewhere"
# These images are for the simulated mount alone: it looks for the version in words 8 to 11.
python3 - <<'PYTHON'
def record(kind, address, data):
    body = bytes([len(data), address >> 8, address & 255, kind]) + bytes(data)
    return ":%s%02X\n" % (body.hex().upper(), -sum(body) & 255)

for seed, name in ((3, "azimuth"), (5, "altitude")):
    words = [i * seed * 257 & 0x3FFF for i in range(400)]
    words[8:12] = [0x1A5A, 0x25A5, 6, 10]
    data = b"".join(word.to_bytes(2, "little") for word in words)
    with open(name + ".hex", "w") as out:
        out.write(record(4, 0, [0, 0]))
        out.writelines(record(0, at, data[at:at + 16]) for at in range(0, len(data), 16))
        out.write(record(0, 0x400E, [0xF4, 0x3F]) + record(1, 0, []))
    with open(name + ".words", "w") as out:
        out.write("".join("%04x\n" % word for word in words))
PYTHON
ls -l ./*.hex

step "2. One package of the two, without the configuration words"
mkdir -p sources/MotorControllers
"$bin/qalmake" --model 5 --name CORVANE --version 6.10 --comments "Simulated mount only" --date 2026.01.31 \
  --leave-out 0x2007 sources/MotorControllers/MC_0610.qal azimuth.hex altitude.hex

step "3. What is in it, and whether anything is to be said of it"
"$bin/qalinfo" --strict sources/MotorControllers/MC_0610.qal

step "4. What its owner reads before fetching it"
printf 'Motor control 6.10\r\n\r\nFor the simulated mount only.\r\n' >sources/MotorControllers/MC_0610.txt

step "5. A key, once; keep update.key to yourself, and give update.pub to your owners"
"$bin/tarnwick-site" keygen keys

step "6. The site, with the package signed"
"$bin/tarnwick-site" build --key keys/update.key sources site/firmware/catalogue
cat site/firmware/catalogue/list.txt

step "7. Served as plain files; here on a port of this computer, asked by way of a proxy"
port=$(python3 -c 'import socket; s = socket.socket(); s.bind(("127.0.0.1", 0)); print(s.getsockname()[1])')
cat >nginx.conf <<NGINX
daemon off; pid pid; error_log errors; events {}
http { access_log off; client_body_temp_path t; proxy_temp_path t; fastcgi_temp_path t; uwsgi_temp_path t;
  scgi_temp_path t; server { listen 127.0.0.1:$port; root $PWD/site; } }
NGINX
[ "$(id -u)" != 0 ] || sed -i '1s/^/user root root; /' nginx.conf
"$nginx" -p "$PWD" -c nginx.conf -e errors &
export http_proxy=127.0.0.1:$port
for _ in $(seq 100); do [ -s pid ] && break || sleep 0.05; done

step "8. What an owner does: your key beside the program, then the package from the site"
cp -r "$portable" home
rm -f home/Tarnwick.ini home/*.pub
cp keys/update.pub "home/Orion Observatory.pub"
home/tarnwick-flash fetch MC_0610
cmp home/MotorControllers/MC_0610.qal site/firmware/catalogue/MC_0610.qal

step "9. Somebody alters it on the way: it is not saved"
sed -i 's/MODELNUMBER=5/MODELNUMBER=6/' site/firmware/catalogue/MC_0610.qal
rm home/MotorControllers/MC_0610.*
if home/tarnwick-flash fetch MC_0610; then echo "An altered package was saved." >&2; exit 1; fi
[ ! -e home/MotorControllers/MC_0610.qal ]
"$bin/tarnwick-site" build --key keys/update.key sources site/firmware/catalogue
home/tarnwick-flash fetch MC_0610

step "10. Into a mount"
mkdir -p home/ports
coproc MOUNT { exec "$bin/tarnwick-mount" --until-eof --link home/ports/COM5; }
read -r _ <&"${MOUNT[0]}"
home/tarnwick-flash program MC_0610 --port COM5
for motor in "16 azimuth" "17 altitude"; do
  read -r address name <<<"$motor"
  echo "dump $address 400" >&"${MOUNT[1]}"
  while read -r line <&"${MOUNT[0]}" && [ "$line" != end ]; do echo "$line"; done >memory
  grep -oiE '\b[0-9a-f]{4}\b' memory | tr A-F a-f | cmp - "$name.words"
done
echo "The mount's memory is that of the hex files, word by word."
