"""The demo as a person runs it: what it prints of each mail, and what it leaves in the files that it names."""
import email
import email.policy
import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]


class Demo(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.out = Path(folder.name) / "demo"

    def run_demo(self, *mails):
        return subprocess.run([sys.executable, ROOT / "scripts/demo", *map(str, mails)], text=True,
                              capture_output=True, env={**os.environ, "DEMO_OUT": str(self.out)})

    def delivered(self, name):
        return email.message_from_bytes((self.out / "delivered" / name).read_bytes(), policy=email.policy.default)

    def test_every_mail_of_the_demo_meets_its_fate(self):
        run = self.run_demo()
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        outcomes = [line for line in run.stdout.splitlines() if line.startswith("    outcome: ")]
        self.assertEqual(len(outcomes), len(list((ROOT / "demo/mails").iterdir())))
        killed = "    outcome: Outlook was killed, sent at its next start"
        self.assertEqual(sum(line.startswith(killed) for line in outcomes), 1, outcomes)
        back = "    outcome: stopped by the add-in: brought back to the screen"
        response = f'    outcome: sent  ({os.path.relpath(self.out / "delivered/14-accepted.eml")})'
        task = ('    outcome: sent, as "[Confidential] Order filters for the third trial"  '
                f'({os.path.relpath(self.out / "delivered/15-task-request.eml")})')
        self.assertEqual([line for line in outcomes if not line.startswith(("    outcome: sent by the add-in", killed))],
                         [back, back, response, task])
        self.assertIn('The user was told: "The mail item was modified during inspection and was not sent."',
                      run.stdout.splitlines())

        labelled = self.delivered("08-confidential.eml")
        self.assertEqual(labelled["Subject"], "[Confidential] Confidential: results of the second trial")
        self.assertIn("CONFIDENTIAL: for the people named above only.", labelled.get_body(("html",)).get_content())

        request = self.delivered("15-task-request.eml")
        self.assertEqual(request["X-Item-Kind"], "taskRequest")
        self.assertTrue(request.get_content().startswith("CONFIDENTIAL: for the people named above only."))
        tasks = [item.read_text("utf-8") for item in (self.out / "profile/Stores/Outlook Data File/Tasks").iterdir()]
        self.assertEqual(len(tasks), 1)
        self.assertIn("CONFIDENTIAL: for the people named above only.", tasks[0])

        replaced = {part.get_filename(): part.get_content() for part in
                    self.delivered("09-price-list.eml").iter_attachments()}
        self.assertEqual(set(replaced), {"price-list.csv was removed.txt", "terms-of-delivery.txt"})
        self.assertIn("was taken out of the mail", replaced["price-list.csv was removed.txt"])

        for part, wanted in (("From", "Ольга"), ("Subject", "Договор")):
            self.assertIn(wanted, str(self.delivered("04-cyrillic-koi8-r.eml")[part]))
        self.assertEqual(self.delivered("12-outlook-killed.eml")["Subject"], "Keys for the workshop")
        for name, method, subject in (
                ("16-invitation.eml", "REQUEST", "[Confidential] Review of the filter trial"),
                ("13-forwarded-meeting.eml", "REQUEST", "FW: Visit to the paper mill"),
                ("14-accepted.eml", "REPLY", "Accepted: Visit to the paper mill")):
            meeting = self.delivered(name)
            self.assertEqual(meeting["Subject"], subject)
            (calendar,) = [part for part in meeting.walk() if part.get_content_type() == "text/calendar"]
            lines = calendar.get_content().splitlines()
            self.assertIn(f"METHOD:{method}", lines)
            self.assertIn(f"SUMMARY:{subject}", lines)
        appointments = [item.read_text("utf-8")
                        for item in (self.out / "profile/Stores/Outlook Data File/Calendar").iterdir()]
        self.assertEqual(len(appointments), 3)
        self.assertNotIn("X-Demo-Item", self.delivered("01-plain.eml"))
        drafts = [item.read_text("utf-8") for item in (self.out / "profile/Stores/Outlook Data File/Drafts").iterdir()]
        self.assertEqual(len(drafts), 2)
        self.assertTrue(any("One more thing: see you on Friday." in item for item in drafts))
        for stays in ("07-card-number.eml", "11-changed-meanwhile.eml"):
            self.assertFalse((self.out / "delivered" / stays).exists())
        inspections = len(list((self.out / "inspections").glob("*-inspector.xml")))
        self.assertEqual(inspections, len(outcomes) + 1)  # the interrupted one began anew
        self.assertIn("Started Async inspection.", (self.out / "add-in.log").read_text("utf-8"))
        self.assertIn("Message should be blocked!", (self.out / "add-in.log").read_text("utf-8"))

    def test_embedded_each_mail_is_inspected_inside_its_send(self):
        mails = [ROOT / "demo/mails" / name for name in ("07-card-number.eml", "08-confidential.eml")]
        run = self.run_demo("--embedded", *mails)
        self.assertEqual(run.returncode, 0, run.stdout + run.stderr)
        outcomes = [line for line in run.stdout.splitlines() if line.startswith("    outcome: ")]
        self.assertEqual(outcomes[0], "    outcome: stopped by the add-in: saved in Drafts, its window is open")
        self.assertTrue(outcomes[1].startswith(
            '    outcome: sent, as "[Confidential] Confidential: results of the second trial"'), outcomes[1])
        self.assertNotIn("Started Async inspection.", (self.out / "add-in.log").read_text("utf-8"))

    def test_a_file_that_is_no_mail_gets_one_line_and_leaves_nothing(self):
        with tempfile.TemporaryDirectory() as folder:
            bad = Path(folder) / "bad.eml"
            bad.write_text("no header stands here")
            run = self.run_demo(ROOT / "demo/mails/01-plain.eml", bad)
        self.assertEqual(run.returncode, 1)
        self.assertEqual(run.stderr, f"mail.py: {bad}: line 1: no header stands there, so this is no mail\n")
        self.assertEqual(run.stdout, "")
        self.assertFalse(self.out.exists())


if __name__ == "__main__":
    unittest.main()
