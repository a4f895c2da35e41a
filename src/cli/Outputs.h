#pragma once

#include "Inputs.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tambrel::cli {

/// Where a command writes.
struct OutputOptions {
    std::string output; ///< A file, a folder, or "-" for standard output; empty for files beside the inputs.
    bool replace = false; ///< Overwrite what is there already.
};

/// The inputs of a command and the output of each. An existing file is overwritten only by wish, an input
/// never, and no file is written twice. Made on the main thread, read by any.
class OutputPlan {
public:
    /// Makes the path that an input is written to where the options name none, from the path without its
    /// extension.
    using Naming = std::function<std::filesystem::path(const std::filesystem::path& input,
                                                       const std::filesystem::path& withoutExtension)>;

    /// Throws UsageError.
    OutputPlan(std::vector<std::filesystem::path> inputs, OutputOptions options, const Naming& naming);

    [[nodiscard]] std::size_t size() const { return inputs_.size(); }
    [[nodiscard]] const std::filesystem::path& input(std::size_t job) const { return inputs_[job]; }
    [[nodiscard]] const std::filesystem::path& output(std::size_t job) const { return outputs_[job]; }
    [[nodiscard]] bool replaces() const { return options_.replace; }

    /// Why `output` must not be written by this job; empty when it may.
    [[nodiscard]] std::string refusal(const std::filesystem::path& output) const;
    [[nodiscard]] std::string refusal(std::size_t job) const;

private:
    std::vector<std::filesystem::path> inputs_;
    std::vector<std::filesystem::path> outputs_;
    OutputOptions options_;
};

/// Takes the older form "IN OUT" apart: the second of two operands is the output when it is "-", when
/// `isOutput` knows its name, or when it names nothing that could be read. Main thread.
void takeOutputOperand(std::vector<std::filesystem::path>& operands, OutputOptions& options,
                       const std::function<bool(const std::filesystem::path&)>& isOutput);

/// True when the path leads to a pipe, a terminal or standard output rather than a file.
[[nodiscard]] bool isStreamOutput(const std::filesystem::path& output);

/// A descriptor for such an output, open for writing. Throws std::system_error.
class StreamOutput {
public:
    explicit StreamOutput(const std::filesystem::path& output);
    ~StreamOutput();
    StreamOutput(const StreamOutput&) = delete;
    StreamOutput& operator=(const StreamOutput&) = delete;
    [[nodiscard]] int descriptor() const { return descriptor_; }

private:
    int descriptor_;
};

/// Writes a file, which appears whole or not at all, or to a stream. Throws std::system_error. Any thread.
void writeOutput(const std::filesystem::path& output, ByteView bytes, bool replace);

} // namespace tambrel::cli
