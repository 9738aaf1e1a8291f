// quor-chart: the commands that need no more than scripts and bars, with the means to draw a PNG.
#include "chart/surface.h"
#include "command_line.h"

int main(int argc, char** argv) {
  quor_host::Program program;
  program.make_png = quor_host::png_surface;
  return quor_host::run_command_line(argc, argv, program);
}
