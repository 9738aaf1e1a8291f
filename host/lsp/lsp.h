// `quor lsp`: the language server over the standard input and output.
#pragma once

namespace CLI {
class App;
}

namespace quor_lsp {

void add_lsp(CLI::App& app);

/// Serves until the editor says exit or closes the input; gives the exit status.
int run_lsp();

}  // namespace quor_lsp
