// A filter with a finite impulse response of eight taps, as a module. It keeps the last eight
// samples and answers their sum weighted by the taps, cut to 16 bits.

static const short taps[2 * 4] = {-3, 9, 21, 37, 37, 21, 9, -3};
static short line[2 * 4];

short saturate(long sum) {
  if (sum > 32767)
    return 32767;
  else if (sum < -32768)
    return -32768;
  return (short)sum;
}

short fir(short sample) {
  long sum = 0;
  int i;
  for (i = 7; i > 0; i--) line[i] = line[i - 1];
  line[0] = sample;
  for (i = 0; i < 8; i++) {
    sum += (long)line[i] * taps[i];
  }
  return saturate(sum >> 7);
}

int main(void) {
  short response[10];
  int n = 0;
  int errors = 0;
  while (n < 10) {
#pragma cdfg module
    response[n] = fir(n == 0 ? 128 : 0);
    n++;
  }
  for (n = 0; n < 8; n++) {
    if (response[n] != taps[n]) errors++;
  }
  return errors;
}
