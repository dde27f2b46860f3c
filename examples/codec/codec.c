// A delta coder and its decoder as two modules, with a meter beside them. They share functions, and
// each prefix stands for a set of hardware of its own: encode and loudness use one copy of saturate
// together, decode uses another.

#include "codec.h"

static int sent = 0;
static int heard = 0;

int saturate(int value, int low, int high) {
  if (value < low) return low;
  if (value > high) return high;
  return value;
}

// The change that a code stands for: its upper bit is the sign, the other three choose the size.
int step(int code) {
  int size;
  switch (code & 7) {
    case 0:
      size = 1;
      break;
    case 1:
    case 2:
      size = 4 * (code & 7);
      break;
    default:
      size = (code & 7) * (code & 7) << 2;
  }
  return (code & 8) != 0 ? -size : size;
}

int follow(int level, int code) { return saturate(level + step(code), -2048, 2047); }

int encode(int sample) {
  int sign = 0;
  int code = 7;
  if (sample < sent) sign = 8;
  do {
    int reached;
    reached = follow(sent, sign | code);
    if (sign == 0 ? reached <= sample : reached >= sample) break;
    code--;
  } while (code > 0);
  sent = follow(sent, sign | code);
  return sign | code;
}

int decode(int code) {
  heard = follow(heard, code);
  return heard;
}

int loudness(int sample) { return saturate(sample < 0 ? -sample : sample, 0, 2047) >> 4; }

int main(void) {
  int samples[6] = {0, 40, 170, -90, -400, 15};
  int loudest = 0;
  int i;
  for (i = 0; i < 6; i++) {
    int code;
    int level;
#pragma cdfg module prefix=tx
    code = encode(samples[i]);
#pragma cdfg module prefix=rx
    if (decode(code) != sent) return 1;
#pragma cdfg module prefix=tx
    level = loudness(samples[i]);
    if (level > loudest) loudest = level;
  }
  return loudest != 25;
}
