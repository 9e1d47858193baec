#!/bin/sh
# fairymax as the opponent in xboard, with the "computer" command filtered out of its input:
# fairymax 5.0b now and then dies of a segmentation fault soon after that command, which would
# end the match through no fault of the engine under test. SIGINT is ignored here (and so in
# fairymax, unless it sets its own handler): xboard's interrupts are meant for the engine, and
# must not end this wrapper.
trap '' INT
PATH=/usr/games:$PATH
grep --line-buffered -v '^computer$' | fairymax "$@"
