#!/usr/bin/env bash
# A short walk through connectkit on the simulated PC. Each step says what it
# shows, then runs the tool; log lines appear only in the steps about logging.
set -u
root=$(cd "$(dirname "$0")/.." && pwd)
tool=$(realpath "${1:-$root/build/native/connectkit}")
cd "$root"
worlds=examples/worlds

step() {
    local what=$1
    shift
    local shown=""
    for argument in "$@"; do
        [[ $argument == *" "* ]] && argument="\"$argument\""
        shown+=" $argument"
    done
    printf '\n\033[1m# %s\n$ connectkit%s\033[0m\n' "$what" "$shown"
    "$tool" "$@"
    echo "(exit code $?)"
}

step "Which build this is, and the machine it runs against" version
step "The connection errors the suite knows" errors list
step "A registered listener hears a posted error" errors post 0x10000001
step "Only the first error of a process is delivered" errors post 0x10000000 0x20000000
step "Every command answers in JSON for scripts" --json errors post 0x10000002
step "Data-report time stamps come from the PC's clock (here, a world file's)" \
    --world $worlds/foundation.json report time
step "A data report is packed into one record" \
    --world $worlds/foundation.json report send 10300 5G Connected Home -61 149 80
step "An Intel card's driver library, found through the PROSet registry value" \
    --world $worlds/intel-proset.json driver
step "A Realtek card's driver library, loaded by ordinal" --json --world $worlds/realtek-us.json driver
step "The channel the hotspot would use, from the PC's and the phone's lists" \
    --world $worlds/intel-pie.json channels --phone 1,6,36,149 --phone24 1,6,11 --phone-current 6
step "A hotspot for the phone: what the phone needs to join it" \
    --world $worlds/hotspot-ok.json hotspot create
step "A hotspot that fails, and the result code that says why" \
    --world $worlds/hotspot-foreign-go.json hotspot create
step "Phones joining and leaving, as the hotspot reports them" \
    --world $worlds/phones-join-and-leave.json hotspot watch --seconds 6
step "The Bluetooth radio switched on, and the change it reports" \
    --world $worlds/bluetooth-off.json bluetooth on
step "Phones' Bluetooth LE advertisements, as the scanner delivers them" \
    --world $worlds/ble-phone-advertising.json ble scan --seconds 1
step "This PC's own advertisement, through the controller's vendor commands" \
    --world $worlds/ble-phone-advertising.json ble advertise general 0e0102 --seconds 1
step "Joining the phone's network: each state change, then the DHCP address" \
    --world $worlds/wifi-phone-ap.json wifi connect DIRECT-Xy-PHONE 8aK3pQ2m
step "Logging: -v shows the library's own log lines (on stderr)" \
    -v --world $worlds/intel-proset.json driver
step "Logging: --log-level error keeps warnings quiet..." --log-level error log "a warning"
step "...and lets errors through" --log-level error log --error "an error, through LogErrorFun"
step "A mistake in a world file names the file and the field" \
    --world $worlds/broken-typo.json report time
exit 0
