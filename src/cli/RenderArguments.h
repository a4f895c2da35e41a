#pragma once

#include "Commands.h"

namespace CLI {
class App;
}

namespace tambrel::cli {

/// Gives the render command the arguments of its own, which write into `options` when they are parsed;
/// `options` outlives `render`.
void addRenderArguments(CLI::App& render, RenderCommandOptions& options);

} // namespace tambrel::cli
