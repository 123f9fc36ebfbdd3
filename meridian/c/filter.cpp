#include "meridian/c/filter.h"

#include "meridian/c/handles.h"
#include "meridian/fs/item_filter.h"

namespace m = meridian;
using m::c::created;
using m::c::done;
using m::c::textOf;

struct MeridianFilter {
  m::ItemFilter value;
};

namespace {

MeridianDecision decisionOf(const m::ItemDecision& decision) noexcept {
  return {decision.isIgnored, textOf(rawValue(decision.rule))};
}

MeridianItemKind kindOf(m::ItemKind kind) noexcept {
  switch (kind) {
    case m::ItemKind::file:
      return MERIDIAN_ITEM_FILE;
    case m::ItemKind::directory:
      return MERIDIAN_ITEM_DIRECTORY;
    case m::ItemKind::symbolicLink:
      return MERIDIAN_ITEM_SYMBOLIC_LINK;
    case m::ItemKind::other:
      break;
  }
  return MERIDIAN_ITEM_OTHER;
}

}  // namespace

MeridianFilter* meridian_filter_create(const MeridianFilterSettings* settings, MeridianError** error) noexcept {
  return created(error, [&] {
    return new MeridianFilter{m::ItemFilter(
        {.extensionFilterList = m::c::stringsOf(settings->extensions, settings->extension_count),
         .filteringOption = settings->only_listed_extensions ? m::ItemFilteringOption::onlyListedExtensions
                                                             : m::ItemFilteringOption::ignoreListedExtensions,
         .ignoreHiddenItems = settings->ignore_hidden_items,
         .forcePathComponents = m::c::stringsOf(settings->ignored_names, settings->ignored_name_count)})};
  });
}

void meridian_filter_destroy(MeridianFilter* filter) noexcept { delete filter; }

bool meridian_filter_decide(const MeridianFilter* filter, MeridianText path, MeridianDecision* decision,
                            MeridianError** error) noexcept {
  return done(error, [&] {
    *decision = decisionOf(filter->value.decision(m::Url::fromFilePath(std::string(m::c::viewOf(path)))));
    return true;
  });
}

void meridian_enumerate_default_ignored_names(MeridianTextVisitor visit, void* context) noexcept {
  bool stop = false;
  for (const std::string_view name : m::defaultForceIgnorePathComponents) {
    visit(textOf(name), &stop, context);
    if (stop) return;
  }
}

bool meridian_walk_tree(MeridianText directory, const MeridianFilter* filter, MeridianTreeVisitor visit,
                        MeridianTreeReport report, void* context, MeridianError** error) noexcept {
  return done(error, [&] {
    m::walkTree(
        m::Url::fromFilePath(std::string(m::c::viewOf(directory))), filter->value,
        [&](const m::TreeItem& item, bool& stop) {
          const MeridianTreeItem passed{textOf(item.path), textOf(item.name), kindOf(item.kind),
                                        decisionOf(item.decision)};
          visit(&passed, &stop, context);
        },
        [&](const m::TreeWalkError& treeError) {
          if (report == nullptr) return;
          const MeridianError reported = m::c::errorOf(treeError);
          report(&reported, context);
        });
    return true;
  });
}
