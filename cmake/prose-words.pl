#!/usr/bin/perl
# prose-words.pl WORDS EXEMPT FILE...: prints each match of WORDS in the files as FILE:LINE: word -> better word, and fails if there
# is one. Ignores the texts of EXEMPT. Also finds phrases across line breaks, even between lines of a comment.
use strict;
use warnings;

# The lines of a list, without comments and empty lines.
sub entries {
    open my $file, '<', $_[0] or die "$_[0]: $!\n";
    return grep { !/^(#|$)/ } map { s/\R//r } <$file>;
}

my ($words, $exempt, @files) = @ARGV;
my @rules;
for (entries($words)) {
    my ($pattern, $instead) = split /\t/;
    defined $instead or die "$words: no tab in: $_\n";
    push @rules, [qr/$pattern/i, $instead];
}
my $exempted = join('|', map { quotemeta } entries($exempt)) || '(?!)';

my $found = 0;
for my $name (@files) {
    open my $file, '<', $name or die "$name: $!\n";
    my @lines = map { s/\R//r } <$file>;
    for my $number (1 .. @lines) {
        my $line = $lines[$number - 1];
        my $next = ($lines[$number] // '') =~ s{^\s*(///?|#|\*|--|;)?\s*}{}r;
        my $text = "$line $next" =~ s/($exempted)/' ' x length $1/ger;
        for my $rule (@rules) {
            my ($regex, $instead) = @$rule;
            while ($text =~ /$regex/g) {
                next if $-[0] >= length $line; # reported with the next line
                print "$name:$number: $& -> $instead\n";
                $found = 1;
            }
        }
    }
}
exit $found;
