#!/usr/bin/env bash
# A short walk through what connectkit can do so far, against the simulated PC.
set -u
tool=${1:-build/native/connectkit}
root=$(cd "$(dirname "$0")/.." && pwd)
worlds="$root/examples/worlds"

step() { printf '\n\033[1m$ connectkit %s\033[0m\n' "$*"; "$tool" "$@"; echo "(exit code $?)"; }

step version
step errors list
step errors post 0x10000001
step errors post 0x10000000 0x20000000
step --json errors post 0x10000002
step --world "$worlds/foundation.json" report time
step --world "$worlds/foundation.json" --json report send 10300 5G Connected Home -61 149 80
step --world "$worlds/intel-proset.json" driver
step --world "$worlds/realtek-us.json" --json driver
step --world "$worlds/intel-pie.json" channels --phone 1,6,36,149 --phone24 1,6,11 --phone-current 6
step --world "$worlds/hotspot-ok.json" hotspot create
step --world "$worlds/hotspot-no-mac.json" --json hotspot create
step --world "$worlds/hotspot-foreign-go.json" hotspot create
step --world "$worlds/phones-join-and-leave.json" hotspot watch --seconds 10
step log --error "a line at error level, through LogErrorFun"
step --log-level error log "a warning that --log-level error keeps quiet"
step --world "$worlds/broken-typo.json" report time
exit 0
