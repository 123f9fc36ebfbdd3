/// \file
/// Shows people what is in media. For example:
///
///     printMediaReport(analysis);
///     // FILE      CONTAINER  VIDEO   SIZE       RATE       START        END          DURATION  AUDIO     MAKER
///     // A001.mov  QuickTime  ProRes  1920x1080  23.98 FPS  01:00:00:00  01:00:09:23  0:10.0    2 tracks  ARRI
#pragma once

#include "meridian/engine/media_analysis.h"

namespace meridian::command {

/// Prints the items that are described: a single one, or those with a deep analysis, as sections, several as the rows
/// of a table, which gives the whole path where file names are equal. On a terminal, names are shortened and columns at
/// the end of importance left out until the rows fit; a line says which.
void printMediaReport(const MediaAnalysis& analysis);

}  // namespace meridian::command
