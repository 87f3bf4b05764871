#!/usr/bin/perl
# serve_oids.pl FILE: answers the net-snmp agent's pass_persist requests (snmpd.conf(5)) from a file of lines
#   OID TYPE VALUE        .1.3.6.1.2.1.43.11.1.1.9.1.1 integer 35
# in any order; "#" begins a comment. The file is read again when it changes, so a test can move a level.
use strict;
use warnings;
$| = 1;

my $file = $ARGV[0];
my ($stamp, @sorted, %objects) = ('');

# Packed so that keys sort as object identifiers do.
sub key { join '', map { pack 'N', $_ } grep { length } split /\./, $_[0] }

sub load {
    my @info = stat $file;
    my $now = @info ? join '/', @info[1, 7, 9] : 'gone';
    return if $now eq $stamp;
    ($stamp, %objects) = ($now);
    if (open my $in, '<', $file) {
        while (<$in>) { $objects{key($1)} = [$1, $2, $3] if /^(\.[\d.]+) (\w+) ?(.*)$/ }
    }
    @sorted = sort keys %objects;
}

sub successor {
    my ($key) = @_;
    for (@sorted) { return $objects{$_} if $_ gt $key }
    return;
}

while (defined(my $command = <STDIN>)) {
    chomp $command;
    if ($command eq 'PING') { print "PONG\n"; next }
    last unless $command eq 'get' || $command eq 'getnext';
    chomp(my $oid = <STDIN>);
    load();
    my $object = $command eq 'get' ? $objects{key($oid)} : successor(key($oid));
    print $object ? join("\n", @$object) . "\n" : "NONE\n";
}
