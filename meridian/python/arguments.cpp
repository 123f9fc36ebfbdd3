#include <nlohmann/json.hpp>

#include "meridian/cli/nearest_text.h"
#include "meridian/cli/transcode_cli_arguments.h"
#include "meridian/cli/transcode_explanation.h"
#include "meridian/cli/transcode_preset.h"
#include "meridian/python/errors.h"
#include "meridian/python/module.h"
#include "meridian/python/properties.h"
#include "meridian/python/record.h"
#include "meridian/serialization/transcode_cli_arguments_json.h"

namespace meridian::inline v0_2::python {
namespace {

using py::literals::operator""_a;
using Arguments = TranscodeCliArguments;
using TextDict = Typed<"dict[str, str]">;
using InputGroups = Typed<"dict[int, list[str]] | None">;

Arguments fromJson(const Typed<"str | bytes">& json) {
  std::string text;
  if (PyBytes_Check(json.ptr())) {
    text = std::string(py::reinterpret_borrow<py::bytes>(json));
  } else if (PyUnicode_Check(json.ptr())) {
    Py_ssize_t size = 0;
    const char* const data = PyUnicode_AsUTF8AndSize(json.ptr(), &size);
    if (data == nullptr) throw py::error_already_set();
    text.assign(data, static_cast<std::size_t>(size));
  } else {
    failWithType("json", "str or bytes", json);
  }
  try {
    return nlohmann::json::parse(text).get<Arguments>();
  } catch (const nlohmann::json::exception& error) {
    throw DecodingError("", error.what());
  }
}

py::tuple stateOf(const Arguments& arguments) {
  const Arguments::Stored& stored = arguments.stored();
  py::object invalid = py::none();
  if (stored.invalidKeyValueLookup) invalid = dictOf(*stored.invalidKeyValueLookup);
  return py::make_tuple(dictOf(stored.flagValueLookup), invalid, shown(stored.orderedFlags));
}

Arguments fromState(const py::object& lookup, const py::object& invalid, const py::object& flags) {
  Arguments::Stored stored{textDictionaryOf(lookup), std::nullopt, std::nullopt};
  if (!invalid.is_none()) stored.invalidKeyValueLookup = textDictionaryOf(invalid);
  if (!flags.is_none()) {
    stored.orderedFlags = bytesOfAll(flags);
    if (!stored.orderedFlags) failWithType("ordered_flags", "an iterable of str", flags);
  }
  return Arguments::fromStored(std::move(stored));
}

/// Returns the annotations of a class and its bases.
py::dict annotationsOf(PyTypeObject& type) {
  const py::dict all;
  for (const py::handle each : py::reinterpret_borrow<py::tuple>(type.tp_mro)) {
    if (py::hasattr(each, "__annotations__")) all.attr("update")(each.attr("__annotations__"));
  }
  return all;
}

/// Returns whether objects of a class may have an attribute: of the class or a base, annotated there, or private.
bool declares(PyTypeObject& type, py::handle name) {
  if (_PyType_Lookup(&type, name.ptr()) != nullptr) return true;
  if (PyUnicode_GET_LENGTH(name.ptr()) > 0 && PyUnicode_READ_CHAR(name.ptr(), 0) == '_') return true;
  return annotationsOf(type).contains(name);
}

[[noreturn]] void failWithAttribute(PyTypeObject& type, const std::string& name) {
  std::vector<std::string> known;
  const py::list names(annotationsOf(type));
  names.attr("extend")(py::reinterpret_steal<py::list>(PyObject_Dir(reinterpret_cast<PyObject*>(&type))));
  for (const py::handle each : names) {
    if (std::string text = py::str(each); !text.starts_with('_')) known.push_back(std::move(text));
  }
  const std::vector<std::string_view> candidates(known.begin(), known.end());
  std::string text = std::string("'") + type.tp_name + "' object has no attribute '" + name + "'";
  if (const auto nearest = nearestText(name, candidates)) {
    text.append("; did you mean ").append(*nearest).append("?");
  } else if (type.tp_dictoffset != 0) {
    text += "; to add one, declare it in the class";
  }
  throw py::attribute_error(text);
}

/// Sets an attribute. Python lets objects of derived classes have any, and a misspelt property would pass.
int setAttribute(PyObject* self, PyObject* name, PyObject* value) {
  try {
    PyTypeObject& type = *Py_TYPE(self);
    if (value != nullptr && PyUnicode_Check(name) && !declares(type, name)) {
      failWithAttribute(type, py::reinterpret_borrow<py::str>(name));
    }
    return PyObject_GenericSetAttr(self, name, value);
  } catch (py::error_already_set& error) {
    error.restore();
  } catch (const py::builtin_exception& error) {
    error.set_error();
  }
  return -1;
}

void addBuilding(py::class_<Arguments>& type) {
  type.def(py::init([](const std::optional<Words>& words, bool maintainOriginalOrdering) {
             return Arguments(words ? words->values : std::vector<std::string>(), maintainOriginalOrdering);
           }),
           "words"_a = py::none(), "maintain_original_ordering"_a = false,
           "Reads an argument vector, without a program path; without words the store is empty. Never fails: unknown "
           "flags are kept aside. words is an iterable of str, bytes or os.PathLike, not one str.");
  type.def_static(
      "from_argument_lookup",
      [](const Typed<"Mapping[str, StrOrBytesPath]">& lookup) {
        return Arguments::fromArgumentLookup(textDictionaryOf(lookup));
      },
      "argument_lookup"_a,
      "Returns the store of a dictionary: checks and normalises its entries in their order and expands its presets.");
  type.def_static("from_json", &fromJson, "json"_a,
                  "Returns the store of a JSON document, as to_json() writes it. Raises DecodingError.");
  type.def(
      "to_json", [](const Arguments& arguments) { return nlohmann::ordered_json(arguments).dump(); },
      "Returns the store as a JSON document. Raises EncodingError for a text that is not valid UTF-8.");
  // By a function that returns a whole store: the usual way makes one without a state first.
  type.def_static("_from_state", &fromState);
  type.def("__reduce__",
           [](const Arguments& arguments) { return pickled<Arguments>(py::str("_from_state"), stateOf(arguments)); });
  type.def("__copy__", [](const Arguments& arguments) { return Arguments(arguments); });
  type.def(
      "__deepcopy__", [](const Arguments& arguments, const py::dict& /*memo*/) { return Arguments(arguments); },
      "memo"_a);
  type.def("__eq__", [](const Arguments& arguments, const py::object& other) {
    if (!py::isinstance<Arguments>(other)) return py::reinterpret_borrow<py::object>(Py_NotImplemented);
    return py::object(py::bool_(arguments.stored() == other.cast<const Arguments&>().stored()));
  });
  type.attr("__hash__") = py::none();
  type.def("__repr__", [](const Arguments& arguments) {
    std::vector<std::string> words = arguments.commandLine();
    for (const auto& [flag, value] : arguments.stored().invalidKeyValueLookup.value_or(TextDictionary())) {
      words.push_back(flag);
      if (!value.empty()) words.push_back(value);
    }
    std::string text = "TranscodeCliArguments(" + std::string(py::str(py::repr(py::cast(shown(words)))));
    if (arguments.stored().orderedFlags) text += ", maintain_original_ordering=True";
    return text + ")";
  });
}

void addEntries(py::class_<Arguments>& type) {
  type.def_property(
      "flag_value_lookup", [](const Arguments& arguments) { return TextDict(dictOf(arguments.flagValueLookup())); },
      [](Arguments& arguments, const Typed<"Mapping[str, StrOrBytesPath]">& lookup) {
        arguments.setFlagValueLookup(textDictionaryOf(lookup));
      },
      "A copy of the valid entries, in their order; a flag without a value has the empty text. Setting it replaces all "
      "of them, as given.");
  type.def(
      "has_argument_flag",
      [](const Arguments& arguments, const Text& flag) { return arguments.hasArgumentFlag(flag.value); }, "flag"_a,
      "Returns whether the flag is stored. It is trimmed, but not lower-cased.");
  type.def(
      "__contains__",
      [](const Arguments& arguments, const Text& flag) { return arguments.hasArgumentFlag(flag.value); }, "flag"_a);
  type.def(
      "argument_flag_value",
      [](const Arguments& arguments, const Text& flag) { return shown(arguments.argumentFlagValue(flag.value)); },
      "flag"_a, "Returns the flag's value, empty for a flag without one; None if the flag is not stored.");
  type.def(
      "set_argument_flag_value",
      [](Arguments& arguments, const Text& flag, const std::optional<Path>& value) {
        arguments.setArgumentFlagValue(flag.value,
                                       value ? std::optional<std::string_view>(value->value) : std::nullopt);
      },
      "flag"_a, "value"_a, "Stores the value as it is, neither normalised nor checked; None removes the flag.");
  type.def_property_readonly(
      "unknown_flags", [](const Arguments& arguments) { return shown(arguments.unknownFlags()); },
      "The flags of the rejected entries in the order of reading; None if there are none.");
  type.def_property_readonly("all_flags_are_valid", &Arguments::allFlagsAreValid, "Whether nothing was rejected.");
  type.def_property_readonly(
      "invalid_key_value_lookup",
      [](const Arguments& arguments) {
        const auto& invalid = arguments.stored().invalidKeyValueLookup;
        return Typed<"dict[str, str] | None">(invalid ? py::object(dictOf(*invalid)) : py::none());
      },
      "The rejected entries; None if there are none.");
  type.def_property_readonly(
      "ordered_flags", [](const Arguments& arguments) { return shown(arguments.stored().orderedFlags); },
      "The flags in the order of the original vector; None unless that order is kept.");
  type.def(
      "command_line", [](const Arguments& arguments) { return shown(arguments.commandLine()); },
      "Returns the argument vector, for subprocess: each flag and its value, even an empty one, are two words.");
  type.def(
      "cli_string", [](const Arguments& arguments) { return shown(arguments.cliString()); },
      "Returns the words with nothing between them: for comparing and logging, not for a shell.");
}

void addInputs(py::class_<Arguments>& type) {
  type.def_property(
      "input_file_groups",
      [](const Arguments& arguments) {
        const auto groups = arguments.inputFileGroups();
        if (!groups) return InputGroups(py::none());
        const py::dict result;
        for (const auto& [group, paths] : *groups) result[py::int_(group)] = shown(paths);
        return InputGroups(result);
      },
      [](Arguments& arguments, const Typed<"Mapping[int, Iterable[StrOrBytesPath]] | None">& groups) {
        if (groups.is_none()) {
          arguments.setInputFileGroups(std::nullopt);
          return;
        }
        Arguments::InputFileGroups all;
        for (const auto& [group, paths] : copiedDict(groups)) {
          const auto number = integerOf(group);
          if (!number) failWithType("input_file_groups", "int as the number of a group", group);
          auto bytes = bytesOfAll(paths);
          if (!bytes) failWithType("input_file_groups", "an iterable of paths", paths);
          all[*number] = *std::move(bytes);
        }
        arguments.setInputFileGroups(all);
      },
      "The input files by the numbers of their groups; None if there are none. Setting it removes every flag that "
      "begins with \"-in\".");
  type.def_property_readonly(
      "first_input_file", [](const Arguments& arguments) { return shown(arguments.firstInputFile()); },
      "The first of the input files; None if there are none.");
  type.def_property_readonly("source_file_analysis_required", &Arguments::sourceFileAnalysisRequired,
                             "Whether the source has to be analysed before the transcode can be planned.");
  type.def(
      "is_requested",
      [](const Arguments& arguments, const Text& command) {
        return arguments.isRequested(SAVTranscodeCliCommand(std::string_view(command.value)));
      },
      "command"_a, "Returns whether the command line asks the transcoder for this listing.");
  type.def(
      "set_requested",
      [](Arguments& arguments, const Text& command, bool isRequested) {
        arguments.setRequested(SAVTranscodeCliCommand(std::string_view(command.value)), isRequested);
      },
      "command"_a, "is_requested"_a, "Adds or removes a listing command.");
}

}  // namespace

void addArguments(py::module_& module) {
  py::class_<Arguments> type(
      module, "TranscodeCliArguments",
      "The settings of one transcode, read from and rendered as an argument vector.\n\nFlags are stored lower-cased "
      "and "
      "trimmed. The typed properties store nothing of their own: each reads and writes the text of one flag, and a "
      "text "
      "that is not valid is None as a property. transcode_properties() lists them. Setting an attribute that does not "
      "exist raises AttributeError; a derived class may add attributes that it declares, by a value, an annotation or "
      "in __slots__, and any whose name begins with an underscore. A store has no lock.",
      py::custom_type_setup([](PyHeapTypeObject* heapType) { heapType->ht_type.tp_setattro = &setAttribute; }));
  addBuilding(type);
  addEntries(type);
  addInputs(type);
  addProperties(module, type);
  type.attr("run_in_transcode_mode_flag") = strOf(Arguments::runInTranscodeModeFlag);
  type.def_static(
      "all_known_command_flags",
      [] { return shown(std::vector<std::string>(allKnownCommandFlags.begin(), allKnownCommandFlags.end())); },
      "Returns every flag that a store knows.");
  module.def(
      "preset_arguments", [](TranscodeCliPreset preset) { return TextDict(dictOf(presetArguments(preset))); },
      "preset"_a, "Returns the settings of a built-in preset, in the order of rendering.");
}

}  // namespace meridian::inline v0_2::python
