"""Filters, walks, unused names and claims."""

import copy
import gc
import os
import pickle
import threading
import weakref
from pathlib import Path

import pytest

import meridian
import other_threads


@pytest.fixture
def card(tmp_path):
    for name in ["A/1.mov", "A/1.xml", "A/.hidden", "B/deep/2.mxf", ".DS_Store", "c.mov"]:
        path = tmp_path / "card" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.touch()
    (tmp_path / "card" / os.fsdecode(b"caf\xe9.mov")).touch()
    (tmp_path / "card" / "link").symlink_to("A")
    return tmp_path / "card"


def test_a_walk_passes_every_item_with_its_decision(card):
    settings = meridian.ItemFilter(["xml"], ignore_hidden_items=True,
                                   force_path_components=meridian.default_force_ignore_path_components())
    items = {os.path.relpath(item, card): item for item in meridian.walk_tree(card, settings)}
    expected = {os.path.relpath(os.path.join(directory, name), card)
                for directory, directories, files in os.walk(card) for name in directories + files}
    assert set(items) == expected
    ignored = {name: item.decision.rule.name for name, item in items.items() if item.decision.is_ignored}
    assert ignored == {".DS_Store": "forced_component", "A/.hidden": "hidden", "A/1.xml": "extension"}
    assert items["link"].kind is meridian.ItemKind.symbolic_link and items["A"].kind is meridian.ItemKind.directory
    assert os.fsencode(items[os.fsdecode(b"caf\xe9.mov")].name) == b"caf\xe9.mov"
    assert list(items) == sorted(items, key=lambda name: [os.fsencode(part) for part in Path(name).parts])


def test_a_walk_reads_a_directory_when_the_item_after_it_is_asked_for(card):
    walk = meridian.walk_tree(card)
    item = next(walk)
    while item.name != "A":
        item = next(walk)
    (card / "A" / "0.mov").touch()
    assert iter(walk) is walk and next(walk).name == ".hidden" and next(walk).name == "0.mov"
    kept = [next(walk)]
    del walk
    assert kept[0].path == str(card / "A" / "1.mov")


def test_errors_of_a_walk_go_to_the_report_and_may_end_it(card):
    errors = []
    assert list(meridian.walk_tree(card / "none", report=errors.append)) == []
    assert list(meridian.walk_tree(card / "none")) == []
    assert errors[0].code is meridian.TreeWalkErrorCode.unreadable_item and errors[0].errno == 2
    assert isinstance(errors[0], OSError) and errors[0].place == str(card / "none")

    def fail(error):
        raise error

    with pytest.raises(meridian.TreeWalkError):
        list(meridian.walk_tree(card / "none", report=fail))
    (card / "A" / "far").symlink_to("x" * 300)
    assert any(item.name == "far" for item in
               meridian.walk_tree(card, meridian.ItemFilter(["x"], meridian.ItemFilteringOption.only_listed_extensions),
                                  errors.append))
    assert errors[-1].code is meridian.TreeWalkErrorCode.unresolved_link


def test_threads_do_not_share_the_walk_of_another(card):
    """Each item comes once, whoever asks, and asking at the same moment is an error."""
    walk, seen = meridian.walk_tree(card), []

    def ask():
        while True:
            try:
                seen.append(next(walk).path)
            except StopIteration:
                return
            except ValueError:
                pass

    threads = [threading.Thread(target=ask) for _ in range(4)]
    for thread in threads:
        thread.start()
    for thread in threads:
        thread.join()
    assert sorted(seen) == sorted(item.path for item in meridian.walk_tree(card))


def test_a_filter_decides_on_single_items(card):
    only = meridian.ItemFilter([".MOV"], meridian.ItemFilteringOption.only_listed_extensions)
    assert not only.is_ignored(card / "c.mov") and not only.is_ignored(card / "A")
    assert only.is_ignored(str(card / "A/1.xml"))
    assert only.decision(card / "A") == meridian.ItemDecision(False, meridian.ItemFilterRule.directory)
    for bad in (["mov", 1], "mov"):
        with pytest.raises(TypeError):
            meridian.ItemFilter(bad)


def test_unused_names(tmp_path):
    (tmp_path / "clip.mov").touch()
    assert meridian.file_path_adjusted_for_collision(tmp_path / "clip.mov") == str(tmp_path / "clip 2.mov")
    assert meridian.last_path_component_adjusted_for_collision("clip", [tmp_path], "mov") == "clip 2.mov"
    paths = meridian.consistent_file_paths_adjusted_for_collision_across_directories([tmp_path], "clip", ["mov", "xml"])
    assert paths == {"mov": str(tmp_path / "clip-2.mov"), "xml": str(tmp_path / "clip-2.xml")}
    assert meridian.removing_invalid_ltfs_characters("Café: 1/2?") == "Caf: 1/2"
    assert meridian.removing_disallowed_mac_os_filesystem_characters("Café: 1/2") == "Café 12"


def test_claims_are_kept_or_removed_with_their_block(tmp_path):
    with meridian.claim_file(tmp_path / "clip.mov") as claim:
        Path(claim[0]).write_text("kept")
    assert claim.paths == [str(tmp_path / "clip.mov")] and Path(claim.paths[0]).read_text() == "kept"
    with pytest.raises(ZeroDivisionError):
        with meridian.claim_consistent_files([tmp_path], "clip", ["mov", "xml"]) as claim:
            assert [(file.path, file.extension) for file in claim] == [
                (str(tmp_path / "clip-2.mov"), "mov"), (str(tmp_path / "clip-2.xml"), "xml")]
            Path(claim[0]).write_text("unfinished")
            os.unlink(claim[1])
            1 / 0
    assert os.listdir(tmp_path) == ["clip.mov"]
    with pytest.raises(ZeroDivisionError):
        with meridian.claim_file_amongst_directories("clip", [tmp_path], "mov") as claim:
            (tmp_path / "other").write_text("of someone else")
            os.replace(tmp_path / "other", claim[0])
            1 / 0
    assert Path(claim[0]).read_text() == "of someone else" and len(claim) == 1
    claim.remove()


def test_a_claim_that_fails_says_why(tmp_path):
    with pytest.raises(meridian.ClaimError) as raised:
        meridian.claim_file(tmp_path / "none" / "clip.mov")
    assert raised.value.code is meridian.ClaimErrorCode.not_created and raised.value.errno == 2
    assert isinstance(raised.value, FileNotFoundError)
    with pytest.raises(meridian.ClaimError):
        meridian.claim_consistent_files([tmp_path], "clip", ["mov", "x/y"])
    assert os.listdir(tmp_path) == []


def test_a_walk_ends_with_what_its_report_raises(card):
    def fail(error):
        raise RuntimeError("stop")

    walk = meridian.walk_tree(card / "nowhere", report=fail)
    with pytest.raises(RuntimeError):
        list(walk)
    assert list(walk) == []
    for what in (lambda: meridian.walk_tree(card, report=5), lambda: meridian.set_logger(5)):
        with pytest.raises(TypeError):
            what()


def test_a_claim_is_removed_wherever_the_process_is(tmp_path, monkeypatch):
    monkeypatch.chdir(tmp_path)
    (tmp_path / "elsewhere").mkdir()
    with pytest.raises(RuntimeError):
        with meridian.claim_file("clip.mov"):
            os.chdir("elsewhere")
            raise RuntimeError
    assert not (tmp_path / "clip.mov").exists()


def test_items_and_claimed_files_are_pickled_and_copied(card, tmp_path):
    for value in [*meridian.walk_tree(card), *meridian.claim_file(tmp_path / "new.mov")]:
        for same in (pickle.loads(pickle.dumps(value)), copy.copy(value), copy.deepcopy(value)):
            assert same == value and os.fspath(same) == os.fspath(value)


@pytest.mark.parametrize("kind", [lambda walk: walk, lambda walk: [walk]])
def test_a_walk_that_its_own_report_refers_to_is_collected(card, kind):
    """Left in the middle, it holds the report, which holds the walk."""
    class Report:
        def __call__(self, error):
            self.errors.append(error)

    report = Report()
    report.walk = kind(meridian.walk_tree(card, report=report))
    next(meridian.walk_tree(card, report=report))
    watched = weakref.ref(report)
    del report
    gc.collect()
    assert watched() is None


def test_a_logger_is_let_go_of_when_another_is_set():
    class Logger:
        def __call__(self, level, text):
            pass

    logger = Logger()
    watched = weakref.ref(logger)
    meridian.set_logger(logger)
    del logger
    gc.collect()
    assert watched() is not None
    meridian.set_logger(None)
    assert watched() is None


@pytest.fixture(scope="module")
def many(tmp_path_factory):
    """A directory in which the first six thousand names are used, in both styles of numbers."""
    directory = tmp_path_factory.mktemp("many")
    for separator in " -":
        for number in range(6000):
            (directory / (f"many{separator}{number}.mov" if number else "many.mov")).touch()
    return directory


@pytest.mark.parametrize("call", [
    lambda many: meridian.last_path_component_adjusted_for_collision("many", [many] * 5, "mov"),
    lambda many: meridian.consistent_file_paths_adjusted_for_collision_across_directories([many] * 5, "many", ["mov"]),
    lambda many: meridian.file_path_adjusted_for_collision(many / "many.mov"),
    lambda many: meridian.claim_file(many / "many.mov").remove(),
    lambda many: meridian.claim_consistent_files([many], "many", ["mov"]).remove(),
    lambda many: meridian.claim_file_amongst_directories("many", [many], "mov").remove()],
    ids=["name", "paths", "path", "claim", "claims", "claim amongst"])
def test_other_threads_run_while_names_are_looked_for(many, call):
    assert other_threads.run_during(lambda: call(many))
