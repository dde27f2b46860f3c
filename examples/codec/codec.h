// Eight steps up and eight steps down, coded in four bits.

int saturate(int value, int low, int high);
int step(int code);
int follow(int level, int code);
int encode(int sample);
int decode(int code);
int loudness(int sample);
