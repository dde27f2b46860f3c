// A mixer turns a complex sample by an oscillator and keeps count. Its whole state is one structure
// of structures; directives say which members come in, which go out, and which are floating.

struct complex {
  int re;
  int im;
};

typedef struct mixer {
  struct complex oscillator;
  struct complex history[4];
  struct {
    unsigned int count;
    float level;
  } stats;
} mixer_t;

static const struct complex start = {256, 0};
static const struct complex eighth = {181, 181};

struct complex turn(struct complex value, const struct complex *by) {
  struct complex result;
  result.re = (value.re * by->re - value.im * by->im) >> 8;
  result.im = (value.re * by->im + value.im * by->re) >> 8;
  return result;
}

void mix(
#pragma cdfg inout varname = mixer.oscillator.re
#pragma cdfg inout varname = mixer.oscillator.im
#pragma cdfg output varname = mixer.stats.count
#pragma cdfg float
    mixer_t *mixer,
#pragma cdfg input
    const struct complex *sample) {
  struct complex mixed;
  int slot;
#pragma cdfg roll
  mixed = turn(*sample, &mixer->oscillator);
  slot = (int)(mixer->stats.count & 3);
  mixer->history[slot] = mixed;
  mixer->stats.count += 1;
  mixer->stats.level = mixer->stats.level * 0.5f + (float)mixed.re;
#pragma cdfg roll
  mixer->oscillator = turn(mixer->oscillator, &eighth);
}

int main(void) {
  mixer_t mixer;
  struct complex samples[2] = {{100, 0}, {0, 100}};
  int i;
  mixer.oscillator = start;
  mixer.stats.count = 0;
  mixer.stats.level = 0.0f;
  for (i = 0; i < 2; i++) {
#pragma cdfg module
    mix(&mixer, &samples[i]);
  }
  return mixer.stats.count == 2 && mixer.history[0].re == 100 ? 0 : 1;
}
