#include "app/shell/startup.h"

int main(int argc, char** argv) { return sylvora::app::runApplication(argc, argv); }
