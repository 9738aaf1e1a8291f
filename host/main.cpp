// quor: compiles and runs scripts from the command line.
#include "command_line.h"
#ifdef QUOR_LSP
#include "lsp/lsp.h"
#endif
#ifdef QUOR_STUDIO
#include "studio/studio.h"
#endif

int main(int argc, char** argv) {
  quor_host::Program program;
#ifdef QUOR_CHART_PROGRAM
  program.png_program = QUOR_CHART_PROGRAM;
#endif
#ifdef QUOR_LSP
  program.commands.push_back({"lsp", quor_lsp::add_lsp, quor_lsp::run_lsp});
#endif
#ifdef QUOR_STUDIO
  quor_host::StudioOptions studio;
  program.commands.push_back({"studio", [&](CLI::App& app) { add_studio(app, studio); },
                              [&] { return run_studio(studio); }});
#endif
  return quor_host::run_command_line(argc, argv, program);
}
