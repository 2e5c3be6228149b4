// A loadable module for ModuleTest.cpp.
extern "C" __attribute__((visibility("default"))) int AddForTest(int a, int b)
{
    return a + b;
}
