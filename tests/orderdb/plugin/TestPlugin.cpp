// SPDX-License-Identifier: MIT
// A plug-in library for the plug-in loader's tests: two entry points with
// plain C names and results a test can recognise.
extern "C" {

__attribute__((visibility("default"))) int qal_test_plugin_twice(int value)
{
    return value * 2;
}

__attribute__((visibility("default"))) int qal_test_plugin_answer()
{
    return 42;
}

} // extern "C"
