#!/usr/bin/env perl
# Prints one table from the CSV of the benchmark program, whose rows are named "<family>/<workload>/<who>" with "brenta" or
# a peer for <who>: the medians of both and their ratio, below 1 where ours is faster.
use strict;
use warnings;

my (%median, @workloads);
while (<>) {
    next unless m{^"([^"]+)/([^"/]+)_median",[^,]*,([0-9.e+-]+),[^,]*,(\w+)};
    my ($workload, $who, $time, $unit) = ($1, $2, $3, $4);
    push @workloads, $workload unless $median{$workload};
    $median{$workload}{$who} = {time => $time, unit => $unit};
}

printf "%-36s %14s   %-12s %14s %8s\n", 'workload', 'ours', 'peer', 'its time', 'ratio';
for my $workload (@workloads) {
    my $ours = $median{$workload}{brenta} or next;
    my @peers = sort grep { $_ ne 'brenta' } keys %{$median{$workload}};
    printf "%-36s %11.1f %s\n", $workload, $ours->{time}, $ours->{unit} unless @peers;
    for my $peer (@peers) {
        my $its = $median{$workload}{$peer};
        printf "%-36s %11.1f %s   %-12s %11.1f %s %8.2f\n", $workload, $ours->{time}, $ours->{unit}, $peer, $its->{time},
            $its->{unit}, $ours->{time} / $its->{time};
    }
}
