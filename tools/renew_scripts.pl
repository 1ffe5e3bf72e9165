#!/usr/bin/env perl
# Renews the expectations in the comments of test scripts from what the console host prints now:
#
#   renew_scripts.pl HOST SCRIPT...      (both as absolute paths)
#
# Output line n takes the place of the n-th "// expect:", message n that of the n-th "// error:", "// warning:" or
# "// message:"; where that says {folder} for the script's own, it still does. A script that prints more or fewer lines
# than it has expectations, or whose messages name other lines, is left alone and named: what it should expect is for a
# person to say.
use strict;
use warnings;

my $SCRATCH = 'build/logs/renew';
my ($host, @scripts) = @ARGV;

sub read_lines {
    my ($path) = @_;
    open my $file, '<', $path or die "$path: $!\n";
    chomp(my @lines = <$file>);
    return @lines;
}

# The lines that the host prints, and its messages. Words of a script's own command line hold no quotes.
sub run_host {
    my ($script, $command, $arguments) = @_;
    system("cd $SCRATCH && '$host' $command '$script' $arguments >../renew.out 2>../renew.err </dev/null");
    my @output = read_lines("$SCRATCH.out");
    pop @output if $command =~ /^check/;    # the summary
    return (\@output, [read_lines("$SCRATCH.err")]);
}

# The new text of an expectation: the next line of its kind. Dies where it would stand on another line.
sub next_text {
    my ($kind, $position, $output, $messages) = @_;
    return shift @$output if $kind eq 'expect' && @$output;
    die "it prints fewer lines than expected\n" if $kind eq 'expect' || !@$messages;
    my $message = shift @$messages;
    return $message if $kind eq 'message';
    my $prefix = $kind eq 'warning' ? "${position}warning: " : $position;
    die "its messages stand on other lines: $message\n" unless index($message, $prefix) == 0;
    return substr $message, length $prefix;
}

sub renewed_lines {
    my ($script, @lines) = @_;
    my $text = join "\n", @lines;
    my ($command) = $text =~ m{// command: ?(.*)};
    my ($arguments) = $text =~ m{// arguments: ?(.*)};
    my ($output, $messages) = run_host($script, $command // 'run', $arguments // '');
    my ($folder) = $script =~ m{^(.*)/};
    for my $i (0 .. $#lines) {
        next unless $lines[$i] =~ m{^(.*// (expect|error|message|warning):)(.*)};
        my ($head, $kind, $old) = ($1, $2, $3);
        my $new = next_text($kind, sprintf('%s(%d): ', $script, $i + 1), $output, $messages);
        $new =~ s/\Q$folder\E/{folder}/g if $old =~ /\{folder\}/;
        $lines[$i] = length $new ? "$head $new" : $head;
    }
    die "it prints more lines than expected\n" if @$output || @$messages;
    return @lines;
}

my $left_alone = 0;
for my $script (@scripts) {
    my @old = read_lines($script);
    my @new = eval { renewed_lines($script, @old) };
    if ($@) {
        print "$script: $@";
        ++$left_alone;
    } elsif ("@new" ne "@old") {
        open my $file, '>', $script or die "$script: $!\n";
        print $file map { "$_\n" } @new;
        print "$script renewed\n";
    }
}
exit($left_alone ? 1 : 0);
