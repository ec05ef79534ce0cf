#!/bin/sh
# SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
# SPDX-License-Identifier: MIT
#
# Makes the catalogue's sounds anew: WAV, 8 bits, mono, 8 kHz, from sines and noise alone. The noise
# comes from a generator of our own with a fixed seed, so every run gives the same bytes.
set -eu
cd "$(dirname "$0")/catalogue/packages/sounds"

# sound FILE MILLISECONDS EXPRESSION: EXPRESSION is a function of t (seconds), d (the duration in
# seconds), noise() and low(cut), from -1 to 1.
sound() {
    LC_ALL=C awk -v ms="$2" '
        function noise() {
            seed = (seed * 16807) % 2147483647
            return seed / 1073741823.5 - 1
        }
        # Noise through a one-pole low-pass; cut from 0 (silence) to 1 (all of it).
        function low(cut) { filtered += cut * (noise() - filtered); return filtered }
        function decay(age, halfLife) { return age < 0 ? 0 : exp(-0.693 * age / halfLife) }
        function le32(n) {
            printf "%c%c%c%c", n % 256, int(n / 256) % 256, int(n / 65536) % 256, int(n / 16777216)
        }
        function le16(n) { printf "%c%c", n % 256, int(n / 256) }
        BEGIN {
            pi = 3.14159265358979; seed = 20260; rate = 8000
            count = int(ms * rate / 1000); d = ms / 1000
            printf "RIFF"; le32(36 + count); printf "WAVEfmt "
            le32(16); le16(1); le16(1); le32(rate); le32(rate); le16(1); le16(8)
            printf "data"; le32(count)
            for (i = 0; i < count; i++) {
                t = i / rate
                value = '"$3"'
                if (value > 1) value = 1
                if (value < -1) value = -1
                printf "%c", int(128 + 127 * value)
            }
        }' > "$1"
}

sound ambience/sound-rain/sound-rain.wav 1500 \
    '0.35 * low(0.75) + (noise() > 0.996 ? 0.5 * noise() : 0)'
sound ambience/sound-wind/sound-wind.wav 1500 \
    'sin(pi * t / d) * 2.2 * low(0.04 + 0.05 * sin(pi * t / d))'
sound ambience/sound-fire/sound-fire.wav 1500 \
    '(crack = noise() > 0.998 ? 1 : crack * 0.93) * noise() * 0.8 + 0.6 * low(0.03)'
sound objects/sound-knock/sound-knock.wav 900 \
    '(decay(t - 0.05, 0.02) + decay(t - 0.3, 0.02) + 0.9 * decay(t - 0.55, 0.02)) * (0.7 * sin(2 * pi * 140 * t) + 0.3 * low(0.5))'
sound objects/sound-clock/sound-clock.wav 1000 \
    '(decay(t - 0.02, 0.004) * sin(2 * pi * 2100 * t) + decay(t - 0.52, 0.005) * sin(2 * pi * 1700 * t)) * 0.8'
