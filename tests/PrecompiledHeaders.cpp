// The headers that the tests share are compiled with this file.
int main() {}
