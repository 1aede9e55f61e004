#!/usr/bin/env perl
# An independent listener to generic netlink, with system calls alone:
#
#   notifications.pl describe FAMILY    what the controller says of the family, in its order
#   notifications.pl listen FAMILY      one line a datagram, until it is ended
#   notifications.pl flood FAMILY N     joins, has N notifications sent while it does not read, and
#                                       tells what it then finds
#
# A datagram's line: bytes received, length field, type ("own" or the number), command, version, and
# all that follows as hexadecimal digits. "-" stands for what is not there.
use strict;
use warnings;

use constant {
    AF_NETLINK => 16, SOCK_RAW => 3, NETLINK_GENERIC => 16,
    SOL_NETLINK => 270, ADD_MEMBERSHIP => 1,
    CONTROLLER => 16, GET_FAMILY => 3, FAMILY_NAME => 2, FAMILY_ID => 1, GROUPS => 7,
    NLMSG_ERROR => 2, GROUP_NAME => 1, GROUP_ID => 2, HEADERS => 20,
};

$| = 1;

# ([type, payload], ...) of well-formed attributes.
sub attributes {
    my ($bytes) = @_;
    my @found;
    while (length $bytes >= 4) {
        my ($length, $type) = unpack 'S2', $bytes;
        push @found, [$type, substr $bytes, 4, $length - 4];
        my $next = ($length + 3) & ~3;
        $bytes = $next < length $bytes ? substr $bytes, $next : '';
    }
    return @found;
}

sub open_socket {
    socket my $socket, AF_NETLINK, SOCK_RAW, NETLINK_GENERIC or die "socket: $!\n";
    bind $socket, pack('SSLL', AF_NETLINK, 0, 0, 0) or die "bind: $!\n";
    return $socket;
}

# The attributes of the controller's answer.
sub ask_controller {
    my ($socket, $name) = @_;
    my $attribute = pack 'SSa*x', 5 + length $name, FAMILY_NAME, $name;
    $attribute .= "\0" x (-length($attribute) & 3);
    send $socket, pack('LSSLLCCS', HEADERS + length $attribute, CONTROLLER, 1, 0, 0,
        GET_FAMILY, 1, 0) . $attribute, 0 or die "send: $!\n";
    defined recv $socket, my $answer, 65536, 0 or die "recv: $!\n";
    if (unpack('x4S', $answer) == NLMSG_ERROR) {
        $! = -unpack 'x16l', $answer;
        die "no family: $!\n";
    }
    return attributes(substr $answer, HEADERS);
}

sub describe {
    my @answer = ask_controller(open_socket(), @_);
    my @groups = map { map { attributes($_->[1]) } attributes($_->[1]) }
        grep { $_->[0] == GROUPS } @answer;
    print 'attributes ', join(' ', map { $_->[0] } @answer), ' groups',
        (map { $_->[0] == GROUP_ID ? ' id' : ' ' . unpack 'Z*', $_->[1] } @groups), "\n";
}

# The socket, joined to the family's first group, and the family's number.
sub join_family {
    my $socket = open_socket();
    my %answer = map { $_->[0] => $_->[1] } ask_controller($socket, @_);
    my ($group) = attributes($answer{+GROUPS} // '') or die "no groups\n";
    my %group = map { $_->[0] => $_->[1] } attributes($group->[1]);
    setsockopt $socket, SOL_NETLINK, ADD_MEMBERSHIP, $group{+GROUP_ID} or die "join: $!\n";
    return $socket, unpack 'S', $answer{+FAMILY_ID};
}

sub line_of {
    my ($datagram, $own) = @_;
    my ($length, $type, $rest);
    $length = unpack 'L', $datagram if length $datagram >= 4;
    $type = unpack 'x4S', $datagram if length $datagram >= 6;
    my ($command, $version) = unpack 'x16CC', $datagram if length $datagram >= HEADERS;
    $rest = unpack 'H*', substr $datagram, HEADERS if length $datagram > HEADERS;
    $type = 'own' if defined $type && $type == $own;
    return join ' ', length $datagram, map { $_ // '-' } $length, $type, $command, $version, $rest;
}

sub listen_to {
    my ($socket, $own) = join_family(@_);
    print "listening\n";
    while (1) {
        my $from = recv $socket, my $datagram, 65536, 0;
        print defined $from ? line_of($datagram, $own) : $!, "\n";
    }
}

sub flood {
    my ($family, $count) = @_;
    my ($socket) = join_family($family);
    open my $knob, '>', "/sys/kernel/debug/zr_terminal/notify/$family/flood" or die "knob: $!\n";
    syswrite $knob, "$count\n" or die "flood: $!\n";
    my ($losses, $next, $order) = (0, 1, 'in order');
    while (1) {
        my $from = recv $socket, my $datagram, 65536, 0x40;    # MSG_DONTWAIT
        if (!defined $from) {
            last if $!{EAGAIN};
            $!{ENOBUFS} or die "recv: $!\n";
            $losses++;
            next;
        }
        # The value is the last word.
        $order = 'out of order' if unpack('L', substr $datagram, -4) != $next++;
    }
    my $seen = $next - 1 == $count ? 'all' : $next - 1 > 100 ? 'some' : 'too few';
    print "$seen $order, losses told: $losses\n";
}

my %modes = (describe => \&describe, listen => \&listen_to, flood => \&flood);
my $mode = $modes{shift // ''} or die "usage: notifications.pl describe|listen|flood FAMILY [N]\n";
$mode->(@ARGV);
