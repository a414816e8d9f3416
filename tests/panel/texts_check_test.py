"""tests/panel/texts_check goes red for what it is there to find, on sources made for it."""

import importlib.machinery
import importlib.util
import pathlib
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True
CHECK = str(pathlib.Path(__file__).with_name("texts_check"))
LOADER = importlib.machinery.SourceFileLoader("texts_check", CHECK)
texts_check = importlib.util.module_from_spec(importlib.util.spec_from_loader("texts_check", LOADER))
LOADER.exec_module(texts_check)


class TextsCheck(unittest.TestCase):
    def faults(self, source, allowed=None):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder, "panel", "page.cpp")
            path.parent.mkdir()
            path.write_text(source, encoding="utf-8")
            return list(texts_check.faults(pathlib.Path(folder), allowed or {}))

    def test_a_text_of_its_own_is_found(self):
        for source in (
            'label->setText("not translated at all");',
            'throw Failure("cannot " "be written");',
            "throw Failure(R\"(cannot be\nwritten)\");",
            'tr("translated"); use("not translated");',
            'tr("translated").arg("not translated");',
            "use('\"', \"not translated\");",
        ):
            self.assertEqual(len(self.faults(source)), 1, source)

    def test_what_translators_are_shown_is_none(self):
        for source in (
            'label->setText(tr("a text for all"));',
            'StartPage::tr(isOpen ? "it is open" : "it is not open");',
            'const Row rows[] = {{"F2", QT_TRANSLATE_NOOP("Page", "write the value")}};',
            'static const char* const all[] = {QT_TR_NOOP("write the value")};',
            'QCoreApplication::translate("Page", "write the value");',
        ):
            self.assertEqual(self.faults(source), [], source)

    def test_comments_includes_and_single_words_are_none(self):
        self.assertEqual(self.faults('// "not a text"\n#include "not a text"\nuse("R_W:1 and");'), [])

    def test_what_is_allowed_is_still_there(self):
        source = 'use("needed by programs");'
        self.assertEqual(self.faults(source, {"panel/page.cpp": ("why", ["needed"])}), [])
        self.assertEqual(self.faults(source, {"panel/page.cpp": ("why", None)}), [])
        self.assertEqual(len(self.faults(source, {"panel/page.cpp": ("why", ["needless"])})), 2)
        self.assertEqual(len(self.faults("use();", {"panel/page.cpp": ("why", None)})), 1)


if __name__ == "__main__":
    unittest.main()
