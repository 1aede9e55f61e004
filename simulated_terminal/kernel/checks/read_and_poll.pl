#!/usr/bin/env perl
# Reads frames from a capture node, and polls it, in two processes each, as often as it comes and goes:
#
#   read_and_poll.pl BUSY_FILE STATE
#
# until BUSY_FILE is gone. STATE is the node's knob, which tells the path that the node has just then.
use strict;
use warnings;

use Fcntl qw(O_NONBLOCK O_RDWR);
use constant { OPENED => 400, FRAME => 720 * 576 * 2 };

my ($busy, $state) = @ARGV;

sub node {
    open my $knob, '<', $state or return;
    my ($line) = <$knob> // '';
    return $line =~ /^node (\S+)/ ? $1 : undef;
}

# Both start a stream where none runs, without asking whether the node is still there.
sub frame {
    my ($file) = @_;
    return sysread $file, my $frame, FRAME;
}

sub events {
    my ($file) = @_;
    my $wanted = '';
    vec($wanted, fileno $file, 1) = 1;
    return select $wanted, undef, undef, .001;
}

# An open node is closed now and then, so that its number comes back and the other one gets a stream.
sub use_node {
    my ($access) = @_;
    while (-e $busy) {
        my $path = node() // next;
        sysopen my $file, $path, O_RDWR | O_NONBLOCK or next;
        for (1 .. OPENED) {
            $access->($file);
            last if $!{ENODEV};
        }
        close $file;
    }
    exit;
}

for my $access (\&frame, \&events) {
    fork or use_node($access) for 1, 2;
}
1 while wait > 0;
