#!/bin/bash
# cups_test.sh TINTORAL KNOWN_PRINTER_FILTER: both filters under a real cupsd with roots of its own, on 127.0.0.1:631
# of a private network (tests/support/netns.sh, as a uid other than 0). A command file is printed to a queue of each;
# checked are the filter's exit status in cupsd's log, the job's state, the bytes that reached the backend, and the
# markers that the queue then has. Exit status 77: there is no cupsd.
set -u
tintoral=$1
known_printer_filter=$2
here=$(cd "$(dirname "$0")" && pwd)
PATH=$PATH:/usr/sbin
for tool in cupsd lpadmin lp lpstat ipptool; do
    command -v $tool >/dev/null || { echo "SKIPPED: no $tool here" >&2; exit 77; }
done

base=$(mktemp -d)
log=$base/error_log
export CUPS_SERVER=127.0.0.1:631
failures=0

check() {  # DESCRIPTION, then a command that must succeed
    local description=$1
    shift
    if "$@"; then echo "ok: $description"; else echo "FAILED: $description"; failures=$((failures + 1)); fi
}

within_10_seconds() {
    for _ in $(seq 200); do
        "$@" && return 0
        sleep 0.05
    done
    return 1
}

add_programs() {
    mkdir -p "$base"/bin/{backend,filter} "$base/kept"
    ln -s "$tintoral" "$base/bin/filter/tintoral"
    ln -s "$known_printer_filter" "$base/bin/filter/known_printer"
    cat > "$base/bin/backend/keep" <<BACKEND
#!/bin/sh
[ \$# -eq 0 ] && exit 0
cat > "$base/kept/\${DEVICE_URI#keep:/}"
BACKEND
    chmod 755 "$base/bin/backend/keep"
}

write_ppd() {  # FILTER
    cat > "$base/$1.ppd" <<PPD
*PPD-Adobe: "4.3"
*FormatVersion: "4.3"
*FileVersion: "1.0"
*LanguageVersion: English
*LanguageEncoding: ISOLatin1
*PCFileName: "TEST.PPD"
*Manufacturer: "Test"
*Product: "(Test)"
*PSVersion: "(3010.000) 0"
*ModelName: "Test"
*ShortNickName: "Test"
*NickName: "Test"
*cupsCommands: "Clean PrintSelfTestPage ReportLevels"
*cupsFilter: "application/vnd.cups-command 0 $1"
PPD
}

# On a busy machine a client now and then gives up its connection to a daemon that is up: hence each is repeated.
add_queue() {  # FILTER, also the queue's name
    write_ppd "$1"
    within_10_seconds eval "lpadmin -p $1 -E -v keep:/$1 -P $base/$1.ppd 2>> $base/clients"
    check "queue $1 is there" within_10_seconds eval "lpstat -p $1 > /dev/null 2>> $base/clients"
}

print_to() {  # QUEUE; the job's number goes to $base/job
    lp -d "$1" "$base/commands" 2>> "$base/clients" | sed -n "s/^request id is $1-\\([0-9]*\\) .*/\\1/p" > "$base/job"
    test -s "$base/job"
}

job_is_over() { grep -q "\[Job $1\] Job \(completed\|aborted\|stopped\|canceled\)" "$log"; }
job_completed() { grep -q "\[Job $1\] Job completed\.$" "$log"; }
filter_succeeded() { grep -q "\[Job $2\] PID [0-9]* ($base/bin/filter/$1) exited with no errors" "$log"; }
log_lacks() { ! grep -q "\[Job $1\] .*$2" "$log"; }

run_job() {  # FILTER; sets job
    within_10_seconds print_to "$1"
    job=$(cat "$base/job")
    within_10_seconds job_is_over "$job"
    check "job $job completed" job_completed "$job"
    check "$1 ended with status 0" filter_succeeded "$1" "$job"
}

read_markers() { ipptool -tv "ipp://127.0.0.1/printers/$1" "$here/markers.test" > "$base/markers"; }
queue_says() { grep -qF "$1" "$base/markers"; }

add_programs
"$here/../support/cups/start_server.sh" "$base" &
cupsd=$!
trap 'kill $cupsd 2>/dev/null; wait $cupsd 2>/dev/null; rm -rf "$base"' EXIT
check "cupsd is up" within_10_seconds eval 'lpstat -r >/dev/null 2>&1'
printf '#CUPS-COMMAND\nClean all\nReportLevels\n' > "$base/commands"

add_queue tintoral
run_job tintoral
check "a printer of unknown maker is sent nothing" test -e "$base/kept/tintoral" -a ! -s "$base/kept/tintoral"
check "the filter has no complaint" log_lacks "$job" "names no scheme\|Tintoral:\|Unable"

add_queue known_printer
run_job known_printer
check "the cleaning job reached the backend" test "$(wc -c < "$base/kept/known_printer")" = 68
check "the queue has three of each marker attribute" within_10_seconds read_markers known_printer
check "colors" queue_says ' = #000000,#0000FF,#99FFFF'
check "levels" queue_says ' = 40,75,7'
check "names" queue_says ' = Black,dOr mat ERROR: été,Light Cyan'
check "types" queue_says ' = ink,ink,ink'

if [ $failures != 0 ]; then
    cat "$base/clients" "$base/markers"
    grep "\[Job" "$log"
fi
exit $((failures > 0))
