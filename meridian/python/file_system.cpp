// The filter of copying applications, and tree walks.
#include <memory>
#include <utility>

#include "meridian/fs/item_filter.h"
#include "meridian/fs/name_rules.h"
#include "meridian/fs/tree_walk.h"
#include "meridian/python/errors.h"
#include "meridian/python/module.h"
#include "meridian/python/record.h"

namespace meridian::inline v0_2::python {
namespace {

using py::literals::operator""_a;
using Report = Typed<"Callable[[TreeWalkError], object] | None">;

/// An item that is kept while the walk goes on.
struct KeptItem {
  std::string path;
  std::string name;
  ItemKind kind = ItemKind::file;
  ItemDecision decision;
};

/// A walk, with what becomes of its errors. Asks the library for the next item whenever Python does.
class Walk {
 public:
  Walk(const Path& directory, const ItemFilter& filter, Report report)
      : walk_(directory.url(), filter), report_(std::move(report)) {}

  KeptItem next() {
    // Without the interpreter's lock, another thread could ask too.
    if (isEnded_) throw py::stop_iteration();
    if (std::exchange(isAsked_, true)) throw py::value_error("another thread is asking this walk for its next item");
    std::vector<TreeWalkError> errors;
    std::optional<KeptItem> kept;
    try {
      const py::gil_scoped_release release;
      const auto item = walk_.next([&](const TreeWalkError& error) { errors.push_back(error); });
      if (item) kept = KeptItem{std::string(item->path), std::string(item->name), item->kind, item->decision};
    } catch (...) {
      isAsked_ = false;
      throw;
    }
    isAsked_ = false;
    try {
      for (const TreeWalkError& error : errors) {
        if (!report_.is_none()) report_(errorOf(error));
      }
    } catch (...) {
      end();
      throw;
    }
    if (!kept) {
      end();
      throw py::stop_iteration();
    }
    return *std::move(kept);
  }

  /// Lets go of the report, which may refer to the walk.
  void end() {
    isEnded_ = true;
    report_ = Report(py::none());
  }

  [[nodiscard]] py::handle report() const noexcept { return report_; }

 private:
  TreeWalk walk_;
  Report report_;
  bool isAsked_ = false;
  bool isEnded_ = false;
};

/// Returns the walk of an object; null for one that is being made or taken apart.
Walk* walkOf(PyObject* self) {
  const auto* const instance = reinterpret_cast<py::detail::instance*>(self);
  return instance->simple_layout && instance->simple_holder_constructed
             ? static_cast<Walk*>(instance->simple_value_holder[0])
             : nullptr;
}

/// Shows the garbage collector the report, through which a walk may refer to itself.
void setUpCollection(PyHeapTypeObject* heapType) {
  PyTypeObject& type = heapType->ht_type;
  type.tp_flags |= Py_TPFLAGS_HAVE_GC;
  type.tp_traverse = [](PyObject* self, visitproc visit, void* arg) {
    Py_VISIT(Py_TYPE(self));
    if (const Walk* const walk = walkOf(self)) Py_VISIT(walk->report().ptr());
    return 0;
  };
  type.tp_clear = [](PyObject* self) {
    if (Walk* const walk = walkOf(self)) walk->end();
    return 0;
  };
  type.tp_dealloc = [](PyObject* self) {
    PyObject_GC_UnTrack(self);
    py::detail::pybind11_object_dealloc(self);
  };
}

std::vector<std::string> stringsOf(const Words& words) { return words.values; }

void addFilter(py::module_& module) {
  Record<ItemDecision>(module, "ItemDecision", "Whether an item is copied, and the rule that decided.")
      .field("isIgnored", &ItemDecision::isIgnored, "True if the item is not copied.")
      .field("rule", &ItemDecision::rule, "The rule that decided.")
      .value([](bool isIgnored, ItemFilterRule rule) { return ItemDecision{isIgnored, rule}; }, "is_ignored"_a,
             "rule"_a,
             "Makes a decision such as ItemFilter.decision() returns. is_ignored is a bool, True if the item is not "
             "copied; "
             "rule is the ItemFilterRule that decided. Raises TypeError for values of other types.")
      .done();
  py::class_<ItemFilter> filter(module, "ItemFilter",
                                "Decides, item by item, what a copying application leaves out. Safe to use from "
                                "several threads.");
  filter.def(
      py::init([](const Words& extensions, ItemFilteringOption option, bool ignoreHiddenItems, const Words& names) {
        return ItemFilter({stringsOf(extensions), option, ignoreHiddenItems, stringsOf(names)});
      }),
      "extension_filter_list"_a = py::tuple(), "filtering_option"_a = ItemFilteringOption::ignoreListedExtensions,
      "ignore_hidden_items"_a = false, "force_path_components"_a = py::tuple(),
      "Prepares the settings. Extensions may be in any case, with or without a leading dot; "
      "force_path_components are names of items to ignore, such as default_force_ignore_path_components().");
  filter.def(
      "is_ignored",
      [](const ItemFilter& self, const Path& item) { return withoutLock([&] { return self.isIgnored(item.url()); }); },
      "item"_a, "Returns whether the item is not copied. Asks the file system only if the answer depends on it.");
  filter.def(
      "decision",
      [](const ItemFilter& self, const Path& item) { return withoutLock([&] { return self.decision(item.url()); }); },
      "item"_a, "Returns whether the item is copied, and the rule that decided.");
  module.def(
      "default_force_ignore_path_components",
      [] {
        return shown(
            std::vector<std::string>(defaultForceIgnorePathComponents.begin(), defaultForceIgnorePathComponents.end()));
      },
      "Returns names that systems leave on volumes, for force_path_components.");
}

}  // namespace

void addFileSystem(py::module_& module) {
  addFilter(module);
  Record<KeptItem>(module, "TreeItem", "An item of a tree, with the filter's decision.")
      .field("path", &KeptItem::path, "The path of the tree's directory as given, with the names below it.")
      .field("name", &KeptItem::name, "The last component of the path.")
      .field("kind", &KeptItem::kind, "The kind of the item itself.")
      .field("decision", &KeptItem::decision, "Whether it is copied, and why.")
      .value(
          [](const Text& path, const Text& name, ItemKind kind, const ItemDecision& decision) {
            return KeptItem{path.value, name.value, kind, decision};
          },
          "path"_a, "name"_a, "kind"_a, "decision"_a,
          "Makes an item such as walk_tree() returns; nothing is checked. Raises TypeError for values of other types.")
      .done()
      .def("__fspath__", [](const KeptItem& item) { return shown(item.path); });
  py::class_<Walk> walk(module, "TreeWalk", "An iterator over the items of a tree, made by walk_tree().",
                        py::custom_type_setup(&setUpCollection));
  walk.def("__iter__", [](py::object self) { return Typed<"Iterator[TreeItem]">(std::move(self)); });
  walk.def("__next__", &Walk::next);
  module.def(
      "walk_tree",
      [](const Path& directory, const std::optional<ItemFilter>& filter, Report report) {
        if (!report.is_none() && PyCallable_Check(report.ptr()) == 0) {
          failWithType("report", "a function or None", report);
        }
        return Walk(directory, filter ? *filter : ItemFilter({}), std::move(report));
      },
      "directory"_a, "filter"_a = py::none(), "report"_a = py::none(),
      "Iterates over every item below the directory, ignored ones too: a directory before its items, and the items of "
      "a directory in the byte order of their names. A directory is read when the item after it is asked for.\n\n"
      "Ignored directories and links are not entered. Each error, such as an unreadable directory, is passed to report "
      "as a TreeWalkError, and the walk goes on; without report errors are left out. A report that raises ends the "
      "walk with its exception.");
  module.def(
      "removing_invalid_ltfs_characters",
      [](const Text& text) { return shown(removingInvalidLtfsCharacters(text.value)); }, "text"_a,
      "Returns the name without the characters that an LTFS tape does not allow.");
  module.def(
      "removing_disallowed_mac_os_filesystem_characters",
      [](const Text& text) { return shown(removingDisallowedMacOSFilesystemCharacters(text.value)); }, "text"_a,
      "Returns the name without the characters that the desktop's file system does not allow.");
}

}  // namespace meridian::inline v0_2::python
