#!/usr/bin/env python3
"""Tests tools/check-translations on small trees, each with one fault."""

import subprocess
import tempfile
import unittest
from pathlib import Path

CHECKER = Path(__file__).resolve().parents[2] / "tools" / "check-translations"
LANGUAGES = ("de", "es", "fr", "hi", "ru", "zh-Hans")
HEADER = ('msgid ""\nmsgstr ""\n"Project-Id-Version: x\\n"\n"Language: de\\n"\n'
          '"MIME-Version: 1.0\\n"\n"Content-Type: text/plain; charset=UTF-8\\n"\n'
          '"Content-Transfer-Encoding: 8bit\\n"\n')


class CheckTranslations(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.root = Path(folder.name)
        self.catalogues = self.root / "Zelvane" / "Resources" / "translations"
        self.catalogues.mkdir(parents=True)

    def code(self, text, name="ui/Window.cpp"):
        path = self.root / "Zelvane" / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def translate(self, *entries, languages=LANGUAGES):
        text = HEADER + "".join(f'\nmsgid "{key}"\nmsgstr "{value}"\n' for key, value in entries)
        for language in languages:
            (self.catalogues / f"{language}.po").write_text(text, encoding="utf-8")

    def run_checker(self, *arguments):
        result = subprocess.run([CHECKER, *arguments, self.root], capture_output=True, text=True)
        self.assertEqual(result.stderr, "")
        return result.returncode, result.stdout.splitlines()

    def complaints_about_german(self):
        status, lines = self.run_checker()
        prefix = "Zelvane/Resources/translations/de.po: "
        self.assertEqual(status, 1 if lines else 0)
        return [line.removeprefix(prefix) for line in lines if line.startswith(prefix)]

    def test_says_nothing_of_complete_translations(self):
        self.code('text = localizedText(QStringLiteral("Cancel"));')
        self.translate(("Cancel", "Abbrechen"))
        self.assertEqual(self.run_checker(), (0, []))

    def test_finds_a_missing_translation_in_each_language(self):
        self.code('localizedText(QStringLiteral("Cancel"));\nlocalizedText(QStringLiteral("OK"));')
        self.translate(("Cancel", "Abbrechen"), ("OK", ""))
        status, lines = self.run_checker()
        self.assertEqual(status, 1)
        self.assertEqual(lines, [f'Zelvane/Resources/translations/{language}.po: "OK" is not translated'
                                 for language in LANGUAGES])

    def test_finds_an_unused_translation(self):
        self.code('localizedText(QStringLiteral("Cancel"));')
        self.translate(("Cancel", "Abbrechen"), ("Gone", "Weg"))
        self.assertEqual(self.complaints_about_german(), ['"Gone" is not used any more'])

    def test_finds_a_missing_catalogue(self):
        self.code('localizedText(QStringLiteral("Cancel"));')
        self.translate(("Cancel", "x"), languages=LANGUAGES[1:])
        self.assertEqual(self.complaints_about_german(), ["is missing"])

    def test_compares_placeholders_by_number_and_kind(self):
        self.code('localizedFormat(QStringLiteral("%@ of %lld"), {a, b});')
        for translation, is_right in (("%@ von %lld", True), ("%2$lld: %1$@", True),
                                      ("%1$@ %2$lld 100 %%", True), ("%lld von %@", False),
                                      ("%@", False), ("%@ %lld %@", False), ("%@ von %d", False)):
            self.translate(("%@ of %lld", translation))
            complaints = [c for c in self.complaints_about_german() if "msgfmt" not in c]
            expected = [] if is_right else ['"%@ of %lld" has other placeholders than its key']
            self.assertEqual(complaints, expected, translation)

    def test_finds_literals_of_several_lines_and_escapes(self):
        self.code('localizedText(\n    QStringLiteral("One \\"two\\" "\n'
                  '                   "\\u2011three\\n"));')
        self.translate(('One \\"two\\" \u2011three\\n', "x\\n"))
        self.assertEqual(self.complaints_about_german(), [])

    def test_finds_both_ends_of_a_choice_and_only_the_format_of_a_format(self):
        self.code('localizedFormat(a ? QStringLiteral("A %@") : QStringLiteral("B %@"),\n'
                  '                {QStringLiteral("not a key")});')
        self.translate(("A %@", "a %@"), ("B %@", "b %@"))
        self.assertEqual(self.complaints_about_german(), [])

    def test_leaves_comments_alone(self):
        self.code('// localizedText(QStringLiteral("Old"))\n/* localizedText(QStringLiteral("Older")) */')
        self.translate()
        self.assertEqual(self.run_checker(), (0, []))

    def test_wants_keys_marked_that_are_written_elsewhere(self):
        self.code('show(localizedText(key));')
        self.translate()
        status, lines = self.run_checker()
        self.assertEqual((status, lines), (1, [
            "Zelvane/ui/Window.cpp: looks up a text that is no literal; mark it where it is written"
            " with LOCALIZATION_KEY"]))

    def test_takes_marked_keys(self):
        self.code('const QString key = LOCALIZATION_KEY("Ready");\nshow(localizedText(key));')
        self.translate(("Ready", "Bereit"))
        self.assertEqual(self.complaints_about_german(), [])

    def test_compares_ends(self):
        self.code('localizedText(QStringLiteral("Wait…"));\nlocalizedText(QStringLiteral("a "));')
        self.translate(("Wait…", "Warten"), ("a ", "b"))
        self.assertEqual(self.complaints_about_german(), [
            '"Wait…" differs in its final ellipsis', '"a " differs in its blanks at the ends'])

    def test_keeps_the_beginning_by_which_the_program_knows_a_status(self):
        self.code('localizedText(QStringLiteral("⌥\\u2011menu: on"));')
        self.translate(("⌥\u2011menu: on", "⌥\u2011Menü: an"))
        self.assertEqual(self.complaints_about_german(),
                         ['"⌥\u2011menu: on" must begin with "⌥\u2011menu"'])

    def test_reports_what_msgfmt_finds(self):
        self.code('localizedText(QStringLiteral("a"));')
        self.translate(("a", "b"), ("a", "c"))
        complaints = self.complaints_about_german()
        self.assertEqual(len(complaints), 1)
        self.assertRegex(complaints[0], "msgfmt says: .*duplicate")

    def test_update_adds_and_removes_and_keeps_the_rest(self):
        self.code('localizedText(QStringLiteral("Cancel"));\nlocalizedFormat(QStringLiteral("%@!"), {a});')
        self.translate(("Gone", "Weg"), ("Cancel", "Abbrechen"))
        status, lines = self.run_checker("--update")
        self.assertEqual(status, 1)
        self.assertEqual(lines[0], 'Zelvane/Resources/translations/de.po: "%@!" is not translated')
        text = (self.catalogues / "de.po").read_text(encoding="utf-8")
        self.assertTrue(text.endswith('\n#: Zelvane/ui/Window.cpp\nmsgid "Cancel"\nmsgstr "Abbrechen"\n'
                                      '\n#: Zelvane/ui/Window.cpp\n#, objc-format\nmsgid "%@!"\n'
                                      'msgstr ""\n'), text)


if __name__ == "__main__":
    unittest.main()
