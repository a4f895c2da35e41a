#pragma once

#include "SerialExecutor.h"
#include "SongPageFacts.h"
#include "WholeLinesText.h"

#include <optional>
#include <stop_token>

namespace tambrel {

/// The page that lists all that a song says. What has to be searched for comes a moment later. Main thread.
class SongPage : public WholeLinesText {
public:
    explicit SongPage(const std::optional<SongPageFacts>& song);
    ~SongPage() override;

    /// Lists what another song says.
    void setSong(const std::optional<SongPageFacts>& song);

private:
    std::stop_source search_{std::nostopstate}; ///< For what the song that is shown says.
    SerialExecutor executor_;
};

} // namespace tambrel
