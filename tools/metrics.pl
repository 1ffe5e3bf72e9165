#!/usr/bin/env perl
# Measures the source text: lines of code and tests, comment shares, lengths of files and functions, untested sources.
# Needs no module, only the small perl that every Debian has. Functions are found by their braces in text freed of comments and literals; the format
# of the sources helps: a body's brace stands behind a blank, an initialiser's does not.
use strict;
use warnings;

my $LONG_FUNCTION = 60;

sub sources {
    open my $found, '-|', 'find', grep { -d } @_ or die "find: $!\n";
    chomp(my @files = <$found>);
    return sort grep { /\.(cpp|h|scr)$/ } @files;
}

sub read_file {
    my ($path) = @_;
    open my $file, '<', $path or die "$path: $!\n";
    local $/;
    return scalar <$file>;
}

# The text with comments gone and literals emptied, line breaks kept.
sub bare_code {
    my ($text) = @_;
    my $breaks = sub { "\n" x ($_[0] =~ tr/\n//) };
    $text =~ s{
        (?<raw>R"(?<mark>[^()\\\s]*)\(.*?\)\g{mark}")
      | (?<number>\b\d[\w.']*)
      | (?<literal>"(?:\\.|[^"\\\n])*"|'(?:\\.|[^'\\\n])*')
      | (?<comment>//[^\n]*|/\*.*?\*/)
    }{
        defined $+{number} ? $+{number}
            : defined $+{comment} ? $breaks->($+{comment})
            : '""' . $breaks->(defined $+{raw} ? $+{raw} : '')
    }gsex;
    return $text;
}

# The lengths of the functions in bare code, first line of the head to closing brace.
sub functions {
    my ($code) = @_;
    my (@lengths, @scopes);
    my ($head, $head_line, $line) = ('', 1, 1);
    my $in_function = 0;
    # Directives are no part of any head.
    $code =~ s/^[ \t]*#(?:[^\n]*\\\n)*[^\n]*//gm;
    for my $char (split //, $code) {
        if ($char eq "\n") { ++$line }
        if ($char eq '{') {
            my $is_body = !$in_function && $head =~ /\s$/ && $head =~ /\(/ && $head !~ /=\s*$/
                && $head !~ /^\s*(?:namespace|enum|struct|class|union|extern)\b[^(]*$/;
            push @scopes, $is_body ? $head_line : 0;
            $in_function ||= @scopes if $is_body;
            # What precedes an initialiser still belongs to the head of the function that it initialises for.
            if ($is_body || $head =~ /\s$/) { $head = '' }
        } elsif ($char eq '}') {
            my $start = pop @scopes;
            if ($start) {
                push @lengths, $line - $start + 1;
                $in_function = 0;
                $head = '';
            }
        } elsif ($char eq ';' && !@{[grep { $_ } @scopes]}) {
            $head = '';
        } else {
            $head_line = $line if $head !~ /\S/ && $char =~ /\S/;
            $head .= $char;
            $head =~ s/^\s*(?:public|private|protected):// if $char eq ':';
        }
    }
    return @lengths;
}

sub percentile {
    my ($share, @values) = @_;
    return 0 unless @values;
    @values = sort { $a <=> $b } @values;
    my $index = int($share * (@values - 1) + 0.5);
    return $values[$index];
}

sub lengths_row {
    my ($name, @values) = @_;
    return sprintf "%-22s %6d   median %4d   p95 %4d   longest %4d\n", $name, scalar @values,
        percentile(0.5, @values), percentile(0.95, @values), percentile(1, @values);
}

# Measures files: code lines, comment lines that hold a letter, physical lengths, function lengths.
sub measure {
    my %sum = (code => 0, comment => 0, files => [], functions => [], long => []);
    for my $path (@_) {
        my $text = read_file($path);
        my $bare = bare_code($text);
        my @lines = split /\n/, $text;
        my @bare_lines = split /\n/, $bare;
        for my $i (0 .. $#lines) {
            my $code = defined $bare_lines[$i] && $bare_lines[$i] =~ /\S/;
            if ($code) { ++$sum{code} }
            elsif ($lines[$i] =~ /[A-Za-z]/) { ++$sum{comment} }
        }
        push @{$sum{files}}, scalar @lines;
        next if $path =~ /\.scr$/;
        my @functions = functions($bare);
        push @{$sum{functions}}, @functions;
        my @long = grep { $_ > $LONG_FUNCTION } @functions;
        push @{$sum{long}}, "$path: @long" if @long;
    }
    return \%sum;
}

sub comment_share {
    my ($sum) = @_;
    my $all = $sum->{code} + $sum->{comment};
    return $all ? sprintf('%d %%', 100 * $sum->{comment} / $all) : '-';
}

my @code_files = sources(qw(src host examples));
my $code = measure(@code_files);
my $tests = measure(sources('tests'));
my $extra = measure(sources(qw(fuzz bench)));
my $headers = measure(sources('src/include'));
my $inner = measure(grep { !m{^src/include/} } @code_files);

printf "%-22s %6d lines\n", 'code', $code->{code};
printf "%-22s %6d lines   %.2f of the code\n", 'tests', $tests->{code},
    $code->{code} ? $tests->{code} / $code->{code} : 0;
printf "%-22s %6d lines\n", 'fuzz targets, benches', $extra->{code};
printf "%-22s %6s in exported headers, %s elsewhere\n", 'comments', comment_share($headers), comment_share($inner);
print lengths_row('files', @{$code->{files}});
print lengths_row('functions', @{$code->{functions}});
print "\nfunctions over $LONG_FUNCTION lines:\n", map { "  $_\n" } @{$code->{long}} if @{$code->{long}};

my @untested = grep { m{^src/(?!os/)[^/]+/.*\.cpp$} && !-f s{^src/(.*)\.cpp$}{tests/$1_test.cpp}r } @code_files;
print "\nsources without a test of their own name:\n", map { "  $_\n" } @untested if @untested;
