#include "meridian/engine/libav/text_drawing.h"

#include <memory>

#include "meridian/engine/libav/handles.h"
#include "meridian/engine/libav/log_collector.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

namespace meridian::inline v0_2::libav {

bool textCanBeDrawn() {
  const LogCollector log;
  const AVFilter* const filter = avfilter_get_by_name("drawtext");
  const std::unique_ptr<AVFilterGraph, FreesByPointer<avfilter_graph_free>> graph(avfilter_graph_alloc());
  if (filter == nullptr || !graph) return false;
  AVFilterContext* const context = avfilter_graph_alloc_filter(graph.get(), filter, nullptr);
  // It is the filter itself that loads the font.
  return context != nullptr && avfilter_init_str(context, "text=0:font=monospace") >= 0;
}

}  // namespace meridian::inline v0_2::libav
