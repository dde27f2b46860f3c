// One statement, once with int and once with double variables.

int ratio(int a, int b, int c) {
  int x;
  x = a / (b + c);
  return x;
}

double precise(double a, double b, double c) {
  double x;
  x = a / (b + c);
  return x;
}

int main(void) {
  int x;
  double y;
#pragma cdfg module
  x = ratio(40, 1, 7);
#pragma cdfg module
  y = precise(5.0, 1.5, 0.5);
  return x == 5 && y == 2.5 ? 0 : 1;
}
