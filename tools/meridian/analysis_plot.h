/// \file
/// Draws the deep analysis of a clip as a page. For example:
///
///     plotAnalysis(analysis.items.front(), "/out/A001.png");
#pragma once

#include <string>

#include "meridian/engine/media_analysis.h"

namespace meridian::command {

/// The images of the filmstrip, and the size of each, as the page has room for.
inline constexpr DeepAnalysisOptions plotOptions{.filmstripImages = 96, .filmstripWidth = 126, .filmstripHeight = 96};

/// Draws an item that has a deep analysis: a filmstrip, the waveform and loudness of its tracks, a histogram of luma,
/// and what happens when: black, frozen and silent stretches, scene changes and damage.
void plotAnalysis(const MediaAnalysisItem& item, const std::string& path);

}  // namespace meridian::command
