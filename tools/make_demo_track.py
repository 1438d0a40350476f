#!/usr/bin/env python3
"""Synthesises the demo track the music scenes are shown with: 32 seconds
at 120 beats a minute of kick, snare, hi-hat, a bass line, a pad and a
lead melody, all made here from sine, saw and noise. Mono, 22050 Hz,
16 bits, so that it stays small; the analysis resamples it.

    python3 tools/make_demo_track.py OUT.wav [--seconds N]
"""
import argparse
import math
import random
import struct
import wave

RATE = 22050
BPM = 120.0
BEAT = 60.0 / BPM

# A minor, F major, C major, G major: one chord a bar (roots as MIDI notes).
PROGRESSION = [(45, (57, 60, 64)), (41, (53, 57, 60)), (48, (55, 60, 64)), (43, (55, 59, 62))]
# A minor pentatonic for the melody.
SCALE = [69, 72, 74, 76, 79, 81, 84]


def hz(note):
    return 440.0 * 2.0 ** ((note - 69) / 12.0)


def add(buf, start, samples, gain=1.0):
    i0 = int(start * RATE)
    for k, s in enumerate(samples):
        if 0 <= i0 + k < len(buf):
            buf[i0 + k] += s * gain


def kick():
    out, phase = [], 0.0
    for k in range(int(0.35 * RATE)):
        t = k / RATE
        f = 50.0 + 450.0 * math.exp(-t * 25.0)  # the punch sweeps through the beat's band
        phase += 2 * math.pi * f / RATE
        out.append(math.sin(phase) * math.exp(-t * 9.0))
    return out


def snare(rng):
    out = []
    for k in range(int(0.2 * RATE)):
        t = k / RATE
        noise = rng.uniform(-1, 1) * math.exp(-t * 22.0)
        body = math.sin(2 * math.pi * 190.0 * t) * math.exp(-t * 30.0)
        out.append(0.6 * noise + 0.5 * body)
    return out


def hihat(rng):
    out, prev = [], 0.0
    for k in range(int(0.05 * RATE)):
        n = rng.uniform(-1, 1)
        out.append((n - prev) * 0.5 * math.exp(-k / RATE * 80.0))  # differenced noise: only the highs
        prev = n
    return out


def tone(freq, seconds, shape, attack=0.01, release=0.1):
    out, phase = [], 0.0
    n = int(seconds * RATE)
    for k in range(n):
        t = k / RATE
        phase = (phase + freq / RATE) % 1.0
        if shape == "saw":
            v = 2.0 * phase - 1.0
        elif shape == "square":
            v = 1.0 if phase < 0.5 else -1.0
        else:
            v = math.sin(2 * math.pi * phase)
        env = min(1.0, t / attack) * min(1.0, (seconds - t) / release)
        out.append(v * max(env, 0.0))
    return out


def lowpass(samples, amount):
    out, y = [], 0.0
    for s in samples:
        y += amount * (s - y)
        out.append(y)
    return out


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("out")
    parser.add_argument("--seconds", type=float, default=32.0)
    args = parser.parse_args()
    rng = random.Random(16)
    buf = [0.0] * int(args.seconds * RATE)
    k_, s_, h_ = kick(), snare(rng), hihat(rng)
    beats = int(args.seconds / BEAT)
    for b in range(beats):
        t = b * BEAT
        bar, beat = divmod(b, 4)
        root, chord = PROGRESSION[bar % len(PROGRESSION)]
        add(buf, t, k_, 0.9)
        if beat in (1, 3):
            add(buf, t, s_, 0.45)
        for half in (0.0, 0.5):
            add(buf, t + half * BEAT, h_, 0.25)
        # Bass: root on the beat, octave on the off-beat.
        add(buf, t, lowpass(tone(hz(root), BEAT * 0.45, "saw"), 0.3), 0.5)
        add(buf, t + 0.5 * BEAT, lowpass(tone(hz(root + 12), BEAT * 0.4, "saw"), 0.3), 0.35)
        if beat == 0:
            for note in chord:
                add(buf, t, tone(hz(note), 4 * BEAT, "sine", attack=0.3, release=0.6), 0.08)
        # The melody enters after four bars: two notes a beat from the scale.
        if bar >= 4:
            for half in (0.0, 0.5):
                if rng.random() < 0.7:
                    note = rng.choice(SCALE)
                    add(buf, t + half * BEAT, lowpass(tone(hz(note), BEAT * 0.45, "square"), 0.3), 0.12)
    peak = max(1e-9, max(abs(s) for s in buf))
    scale = 0.9 / peak
    with wave.open(args.out, "wb") as w:
        w.setnchannels(1)
        w.setsampwidth(2)
        w.setframerate(RATE)
        w.writeframes(b"".join(struct.pack("<h", int(s * scale * 32767)) for s in buf))


if __name__ == "__main__":
    main()
