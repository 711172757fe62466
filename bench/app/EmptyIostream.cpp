// The least that a C++ program with the iostream header costs to start and end: the measure for the
// tool's whole run.
#include <iostream>

int main() {}
