#include "meridian/engine/libav/filter_graph.h"

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
}

#include "meridian/engine/libav/log_collector.h"

namespace meridian::inline v0_2::libav {
namespace {

using InOutPointer = std::unique_ptr<AVFilterInOut, FreesByPointer<avfilter_inout_free>>;

InOutPointer endOf(const char* name, AVFilterContext* filter) {
  InOutPointer end(avfilter_inout_alloc());
  if (!end) return nullptr;
  end->name = av_strdup(name);
  end->filter_ctx = filter;
  return end;
}

}  // namespace

Expected<std::unique_ptr<FrameFilter>, std::string> FrameFilter::open(const std::string& filters,
                                                                      const FilterInput& input, unsigned threads) {
  const LogCollector log;
  const auto failure = [&log] {
    return Unexpected(log.firstError().empty() ? std::string("the filter cannot be opened") : log.firstError());
  };
  std::unique_ptr<FrameFilter> filter(new FrameFilter);
  filter->graph_.reset(avfilter_graph_alloc());
  if (!filter->graph_) return failure();
  filter->graph_->nb_threads = static_cast<int>(threads);
  const std::string format =
      "video_size=" + std::to_string(input.width) + "x" + std::to_string(input.height) +
      ":pix_fmt=" + std::to_string(input.format) + ":time_base=1/" + std::to_string(timeLine.den) +
      ":pixel_aspect=" + std::to_string(input.pixelAspectRatio.num) + "/" + std::to_string(input.pixelAspectRatio.den);
  AVFilterGraph* const graph = filter->graph_.get();
  if (avfilter_graph_create_filter(&filter->source_, avfilter_get_by_name("buffer"), "in", format.c_str(), nullptr,
                                   graph) < 0 ||
      avfilter_graph_create_filter(&filter->sink_, avfilter_get_by_name("buffersink"), "out", nullptr, nullptr, graph) <
          0) {
    return failure();
  }
  // FFmpeg names the ends by what is open there: the source's output is the chain's input.
  InOutPointer begin = endOf("in", filter->source_);
  InOutPointer end = endOf("out", filter->sink_);
  if (!begin || !end) return failure();
  AVFilterInOut* inputs = end.release();
  AVFilterInOut* outputs = begin.release();
  const int parsed = avfilter_graph_parse_ptr(graph, filters.c_str(), &inputs, &outputs, nullptr);
  avfilter_inout_free(&inputs);
  avfilter_inout_free(&outputs);
  if (parsed < 0 || avfilter_graph_config(graph, nullptr) < 0) return failure();
  return filter;
}

FrameFilter::~FrameFilter() {
  // Some filters print a summary.
  const LogCollector log;
  graph_.reset();
}

bool FrameFilter::send(FramePointer frame) { return av_buffersrc_add_frame(source_, frame.get()) >= 0; }

FramePointer FrameFilter::receive() {
  FramePointer frame(av_frame_alloc());
  if (!frame || av_buffersink_get_frame(sink_, frame.get()) < 0) return nullptr;
  // Filters that could give an image for each field count in halves.
  if (frame->pts != AV_NOPTS_VALUE) frame->pts = toTimeLine(frame->pts, av_buffersink_get_time_base(sink_));
  return frame;
}

}  // namespace meridian::inline v0_2::libav
