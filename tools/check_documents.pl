#!/usr/bin/env perl
# Checks the blocks of code in documents, from the project's root:
#
#   check_documents.pl HOST FOLDER DOCUMENT...      (HOST and FOLDER as absolute paths; FOLDER is for scratch files)
#
#   ```cpp ```cmake   stand in an example or another file that is compiled, line for line, perhaps indented further
#   ```sh             commands that exist: './dev' and 'brenta' with their commands, and a few others; those of 'brenta'
#                     are run if a block of output follows
#   ```brenta         a script; the host's tests run it, here it must say what to expect, or output follows
#   ```output         what the block before it prints: of C++ (text may stand between), lines of the .expected
#                     file beside the source; of commands, what they print now. A line "..." stands for any lines
#   ```text           anything else
#
# and the rows of every table with the heading "| script | message | ...": the script, a module or a command text, fails with
# this message first. Links within the project lead to files, and to headings, that are there.
use strict;
use warnings;

my $SHELL_WORDS = qr/^(?:cmake|c\+\+|cd|git|sudo|pkg-config)$/;

my ($host, $folder, @documents) = @ARGV;
my %compiled_files;    # path => text
my $failures = 0;

sub read_file {
    my ($path) = @_;
    open my $file, '<', $path or die "$path: $!\n";
    local $/;
    return scalar(<$file>) // '';
}

sub write_file {
    my ($path, $text) = @_;
    open my $file, '>', $path or die "$path: $!\n";
    print {$file} $text;
    close $file or die "$path: $!\n";
}

sub fail {
    my ($block, $text) = @_;
    print "$block->{file}($block->{line}): $text\n";
    ++$failures;
}

# What a command prints, errors included. It runs in the scratch folder, where 'examples' is the project's, and keeps no
# settings but there.
sub output_of {
    my ($command) = @_;
    write_file("$folder/command.sh", "cd '$folder' && $command\n");
    return scalar `BRENTA_APPDATA='$folder' PATH="\$(dirname '$host'):\$PATH" bash '$folder/command.sh' 2>&1 </dev/null`;
}

# The file that holds the block's lines, all indented by the same blanks.
sub file_with {
    my ($block) = @_;
    my @lines = map { /\S/ ? '\g{blanks}' . quotemeta : '[ ]*' } @{$block->{lines}};
    $lines[0] =~ s/^\\g\{blanks\}/(?<blanks>[ ]*)/;
    my $pattern = join '\n', @lines;
    for my $path (sort keys %compiled_files) {
        return $path if $compiled_files{$path} =~ /^$pattern$/m;
    }
    return;
}

sub matches {
    my ($text, @expected) = @_;
    my $pattern = join '', map { $_ eq '...' ? '(?:.*\n)*?' : quotemeta($_) . '[ ]*\n' } @expected;
    return $text =~ /^$pattern\z/;
}

my $commands;    # what 'brenta --help' says, once asked

sub exists_command {
    my ($line) = @_;
    my ($program, $word) = grep { !/^[A-Z_]+=/ } split ' ', $line;
    if ($program eq './dev') { return read_file('dev') =~ /^  \Q$word\E\b/m }
    if ($program eq 'brenta') {
        $commands //= output_of('brenta --help');
        return $word =~ /^-/ || $commands =~ /^  \Q$word\E\b/m;
    }
    return $program =~ $SHELL_WORDS;
}

sub check_sh {
    my ($block) = @_;
    for my $line (@{$block->{lines}}) {
        next if $line =~ /^\s*(?:#|$)/;
        fail($block, "there is no such command: $line") unless exists_command($line);
    }
}

sub check_example {
    my ($block) = @_;
    $block->{example} = file_with($block) or fail($block, "stands in no file that is compiled");
}

sub check_output {
    my ($block, $before) = @_;
    my @lines = @{$block->{lines}};
    if ($before->{kind} eq 'sh') {
        my $output = join '', map { output_of($_) } @{$before->{lines}};
        fail($block, "printed now:\n$output") unless matches($output, @lines);
    } elsif ($before->{kind} eq 'cpp' && $before->{example}) {
        (my $expected = $before->{example}) =~ s/\.cpp$/.expected/;
        my $part = join "\n", @lines;
        fail($block, "stands not in $expected") unless "\n" . read_file($expected) =~ /\n\Q$part\E\n/;
    } elsif ($before->{kind} ne 'brenta') {
        fail($block, "belongs to no block before it");
    }
}

sub check_script {
    my ($block, $next) = @_;
    return if $next && $next->{kind} eq 'output' && $next->{behind};
    return if grep { m{// (?:expect|error|message|warning):} } @{$block->{lines}};
    fail($block, 'says not what to expect');
}

# A row's script is a module if it defines something, else a command.
sub check_row {
    my ($row) = @_;
    my $message = $row->{message};
    write_file("$folder/row.scr", $row->{script});
    my $command = 'brenta exec "$(cat row.scr)"';
    if ($row->{script} =~ /^(?:function|class|include)\b|^var [^;]*;\s*(?:function|class|var)\b/) {
        $command = 'brenta run row.scr';
    }
    my ($first) = split /\n/, output_of("$command 2>&1 >/dev/null");
    $first = '' unless defined $first;
    $first =~ s/^\S+\(\d+\): //;
    fail($row, "says '$first' instead of '$message'") if $first ne $message;
}

# The blocks and table rows of a document, in their order. A block is `behind` another if only blank lines stand between.
sub parts_of {
    my ($path) = @_;
    my (@parts, $open, $in_table);
    my $number = 0;
    my $behind = 0;
    for my $line (split /\n/, read_file($path)) {
        ++$number;
        if ($open) {
            if ($line eq '```') { $open = undef; $behind = 1 }
            else { push @{$open->{lines}}, $line }
        } elsif ($line =~ /^```(.*)/) {
            $open = {file => $path, line => $number, kind => $1, lines => [], behind => $behind};
            push @parts, $open;
        } else {
            $behind = 0 if $line =~ /\S/;
            if ($in_table && $line =~ /^\| `(.*)` \| "(.*?)" \|/) {
                my ($script, $message) = ($1, $2);
                s/\\\|/|/g for $script, $message;
                push @parts, {file => $path, line => $number, kind => 'row', script => $script, message => $message};
            }
            $in_table = $line =~ /^\| script \| message \|/ || ($in_table && $line =~ /^\|/);
        }
    }
    fail($open, 'has no end') if $open;
    return @parts;
}

# The block that prints an output: the one directly before it, or the program quoted last.
sub printer_of {
    my ($output, @before) = @_;
    return $before[-1] if $output->{behind};
    my @programs = grep { $_->{kind} eq 'cpp' } @before;
    return $programs[-1] // {kind => 'none'};
}

# The names by which links reach the headings of a document.
sub anchors_of {
    my ($path) = @_;
    my %anchors;
    for my $heading (read_file($path) =~ /^#+ (.*)$/mg) {
        my $anchor = lc $heading;
        $anchor =~ s/[^a-z0-9 _-]//g;
        $anchor =~ tr/ /-/;
        $anchors{$anchor} = 1;
    }
    return \%anchors;
}

sub check_links {
    my ($path) = @_;
    my ($start) = $path =~ m{^(.*/)};
    my $number = 0;
    for my $line (split /\n/, read_file($path)) {
        ++$number;
        while ($line =~ /\]\(([^):#]*)(?:#([^)]+))?\)/g) {
            my ($file, $anchor) = ($1, $2);
            my $target = length $file ? ($start // '') . $file : $path;
            my $place = {file => $path, line => $number};
            fail($place, "there is no $target") if !-e $target;
            fail($place, "$target has no heading '$anchor'") if $anchor && -f $target && !anchors_of($target)->{$anchor};
        }
    }
}

sub check_document {
    my ($path) = @_;
    check_links($path);
    my @parts = parts_of($path);
    for my $i (0 .. $#parts) {
        my $part = $parts[$i];
        if ($part->{kind} =~ /^(?:cpp|cmake)$/) { check_example($part) }
        elsif ($part->{kind} eq 'sh') { check_sh($part) }
        elsif ($part->{kind} eq 'brenta') { check_script($part, $parts[$i + 1]) }
        elsif ($part->{kind} eq 'output') { check_output($part, printer_of($part, @parts[0 .. $i - 1])) }
        elsif ($part->{kind} eq 'row') { check_row($part) }
        elsif ($part->{kind} ne 'text') { fail($part, "is marked '$part->{kind}': neither code nor output nor text") }
    }
}

my @compiled = map { ('-o', '-name', $_) } '*.cpp', '*.h', 'CMakeLists.txt';
open my $found, '-|', qw(find examples src tests fuzz -false), @compiled or die "find: $!\n";
chomp(my @paths = <$found>);
%compiled_files = map { $_ => read_file($_) } @paths;
system('rm', '-rf', $folder);
mkdir $folder or die "$folder: $!\n";
chomp(my $root = `pwd`);    # PWD is the one of whoever started the tests
symlink "$root/examples", "$folder/examples" or die "examples: $!\n";
check_document($_) for @documents;
exit($failures ? 1 : 0);
