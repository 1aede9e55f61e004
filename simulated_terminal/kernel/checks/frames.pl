#!/usr/bin/env perl
# Reads raw frames of a capture node from standard input and tells what each shows:
#
#   frames.pl UYVY|YUYV|NV12 WIDTHxHEIGHT
#
# A frame's line: camera, standard, frame number, digit, column of the bar, colour of the field behind
# the digit as a word and as y,u,v. "-" stands for what the frame does not show as it should.
use strict;
use warnings;

use constant CELLS => 24;

my ($format, $size) = @ARGV;
my ($width, $height) = split /x/, $size;
my $length = $format eq 'NV12' ? $width * $height * 3 / 2 : $width * $height * 2;
my $frame;

# (y, u, v) of a pixel.
sub pixel {
    my ($x, $y) = @_;
    if ($format eq 'NV12') {
        my $pair = $width * $height + int($y / 2) * $width + ($x & ~1);
        return (ord substr($frame, $y * $width + $x, 1), unpack 'x' . $pair . 'C2', $frame);
    }
    my @bytes = unpack 'C4', substr $frame, 2 * ($y * $width + ($x & ~1)), 4;
    @bytes = @bytes[1, 0, 3, 2] if $format eq 'YUYV';
    return ($x & 1 ? $bytes[3] : $bytes[1], $bytes[0], $bytes[2]);
}

# That in the middle of a cell; columns and rows count from 0.
sub cell {
    my ($column, $row) = @_;
    return pixel(int(($column + .5) * $width / CELLS), int(($row + .5) * $height / CELLS));
}

sub is_light {
    my ($column, $row) = @_;
    my ($white) = cell(0, 0);
    my ($black) = cell(1, 0);
    my ($luma) = cell($column, $row);
    return $luma > ($white + $black) / 2 ? 1 : 0;
}

sub number_in {
    my ($from, $to) = @_;
    return oct '0b' . join '', map { is_light($_, 0) } $from .. $to;
}

sub strip_is_sound {
    my ($white) = cell(0, 0);
    my ($black) = cell(1, 0);
    my $ones = grep { is_light($_, 0) } 2 .. 20;
    return $white > $black && number_in(21, 23) == $ones % 8;
}

sub colour {
    my ($luma, $u, $v) = cell(3, 12);
    return 'grey' if abs($u - 128) < 20 && abs($v - 128) < 20;
    return $v > 180 ? 'red' : $u > 180 ? 'blue' : $u < 90 && $v < 90 ? 'green' : '-';
}

# Where it is light: in the middle of top, centre and bottom, then at the upper sides, then at the lower ones.
my %digits = ('1110000' => 1, '1110110' => 2, '1110101' => 3);

# White on the field's colour.
sub digit {
    my @middles = ([11, 5], [11, 11], [11, 18], [9, 9], [14, 9], [9, 15], [14, 15]);
    my $limit = ((cell(0, 0))[0] + (cell(3, 12))[0]) / 2;
    return $digits{join '', map { (cell(@$_))[0] > $limit ? 1 : 0 } @middles} // '-';
}

sub bar {
    my $row = int(21 * $height / CELLS);
    my ($white) = cell(0, 0);
    my ($black) = cell(1, 0);
    for (my $x = 0; $x < $width; $x += 2) {
        return $x if (pixel($x, $row))[0] > ($white + $black) / 2;
    }
    return '-';
}

binmode STDIN;
while ((my $got = read STDIN, $frame, $length) > 0) {
    if ($got < $length) {
        print "$got bytes of a frame\n";
    } elsif (strip_is_sound()) {
        printf "%d %s %d %s %s %s %s\n", number_in(2, 3), is_light(4, 0) ? 'ntsc' : 'pal',
            number_in(5, 20), digit(), bar(), colour(), join ',', cell(3, 12);
    } else {
        print "no strip\n";
    }
}
