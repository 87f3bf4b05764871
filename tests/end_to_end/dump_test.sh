#!/bin/bash
# dump_test.sh TINTORAL_DUMP CORPUS: what the developer's tool says about captured bytes, and about what it cannot read.
set -euo pipefail
dump=$1
cd "$2"
fail() { echo "FAILED: $*" >&2; exit 1; }

# says LINE KIND [FILE]: that line, and nothing on standard error.
says() {
    local said
    said=$("$dump" "${@:2}" 2>&1) || fail "${*:2}: $said"
    grep -qxF -- "$1" <<< "$said" || fail "${*:2} does not say '$1' but: $said"
}
# refuses STATUS WORDS ARGUMENT...: ends with the status, and the words on standard error only.
refuses() {
    local said status=0
    said=$("$dump" "${@:3}" 2>&1 >/dev/null </dev/null) || status=$?
    [ $status = "$1" ] && grep -qF -- "$2" <<< "$said" || fail "${*:3}: status $status, $said"
}

tail -c +2 epson/binary-four-inks | says " colors = 4, status = Idle" epson # the first byte is the fuzz target's
says " 2: 41 = 75 % Photo Black" canon canon/three-inks
(printf '\0\x26'; cat canon/three-inks) | says " 0: 01 = 40 % Black" bjnp
says " 1: 04 = 40 % Cyan" dws hp/warnings
says " 0: 01 = 45 % Black" hp-id hp/vstatus
says " 1: 05 = 95 % Magenta" hp-id hp/s-field
echo 'S:0000000000000000141000025;' | says " 0: 01 = 37 % Black" hp-s
echo 'VSTATUS:$HB0,PRNT,K0,KP037;' | says " colors = 1, status = Printing" hp-vstatus
says "model = Stylus C84" device-id device_id/make-and-model
says "type = 10, number = 0, text = DeskJet 900C" pml pml/text-reply
says "oid = 1.3.6.1.2.1.43.11.1.1.9.1.1v = 35 " snmp snmp/one-supply
(printf '\1\1\0\x0B\0\0\0\7'; cat ipp/three-markers) | says "IPP/1.1 Get-Printer-Attributes (0x000b), request 7" ipp
(printf '\1\1\4\6\0\0\0\7'; cat ipp/three-markers) | says "client-error-not-found (0x0406)" ipp-answer
(printf '\1\1\0\0\0\0\0\7'; cat ipp/three-markers) | says "21 marker-levels = 80" ipp-answer

refuses 2 "usage: tintoral-dump KIND [FILE]"
refuses 2 "hp-id " no-such-kind hp/vstatus
refuses 1 "no SNMPv1 packet" snmp
refuses 1 "no status reply" epson snmp/one-supply
refuses 1 "no device ID with" hp-id device_id/make-and-model
refuses 1 "No such file" snmp no-such-file
refuses 1 "Is a directory" snmp .
head -c 70000 /dev/zero | { ! "$dump" ipp 2>&1; } | grep -q "longer than 65536 bytes" || fail "a long input is taken"
