#include "run.h"

int main(int argc, char** argv) { return vptzctl::Run(argc, argv); }
