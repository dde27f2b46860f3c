// The smallest design worth looking at: one module function with a prefix, and one function that it
// calls and therefore gets a copy of.

int half(int value) { return value / 2; }

int scale(int gain, int divisor, int bias) {
  int result;
  result = gain / (divisor + half(bias));
  return result;
}

int main(void) {
  int result;
#pragma cdfg module prefix=m
  result = scale(40, 1, 6);
  return result == 10 ? 0 : 1;
}
