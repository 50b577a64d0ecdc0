"""mail.py from outside: mails become items, items become mails, and what is wrong is told in one line."""

import base64
import email
import email.policy
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
PROGRAM = ROOT / "stand-ins" / "outlook" / "mail.py"
DEMO = ROOT / "demo" / "mails"


class MailTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def run_program(self, *arguments):
        return subprocess.run([sys.executable, PROGRAM, *map(str, arguments)], capture_output=True, text=True,
                              encoding="utf-8", check=False)

    def open(self, data):
        source, target = self.folder / "in.eml", self.folder / "item.json"
        source.write_bytes(data if isinstance(data, bytes) else data.encode("utf-8"))
        run = self.run_program("open", source, target)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        return json.loads(target.read_text(encoding="utf-8"))

    def write(self, item):
        source, target = self.folder / "out.json", self.folder / "out.eml"
        source.write_text(json.dumps(item), encoding="utf-8")
        run = self.run_program("write", source, target)
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        return target.read_bytes()

    def parsed(self, item):
        return email.message_from_bytes(self.write(item), policy=email.policy.default)

    def refused(self, word, data, expected):
        """The one line that is said, behind the file's name; nothing is left in the folder but the file itself."""
        source = self.folder / "bad"
        source.write_bytes(data if isinstance(data, bytes) else data.encode("utf-8"))
        run = self.run_program(word, source, self.folder / "target")
        self.assertEqual(run.stderr, f"mail.py: {source}: {expected}\n")
        self.assertEqual(run.returncode, 1)
        self.assertEqual(os.listdir(self.folder), ["bad"])


class OpenTest(MailTest):
    def test_task_by_its_header(self):
        item = self.open("From: anna@example.com\nTo: Ben <ben@example.com>\nX-Item-Kind: task\n\nPaint the fence.\n")
        self.assertEqual(item["kind"], "task")
        self.assertEqual(item["headers"], [])
        delivered = self.parsed({**item, "kind": "taskRequest"})
        self.assertEqual(delivered["X-Item-Kind"], "taskRequest")
        self.assertNotIn("X-Item-Kind", self.parsed({**item, "kind": "mail"}))

    def test_unknown_kind(self):
        self.refused("open", "From: anna@example.com\nX-Item-Kind: fax\n\nx\n",
                     'X-Item-Kind says "fax", which is neither "mail" nor "task"')

    def test_plain_mail(self):
        item = self.open("From: Anna <anna@example.com>\nTo: ben@example.com\nCc: Eva <eva@example.com>\n"
                         "Subject: Plans\nDate: Mon, 3 Mar 2025 09:12:44 +0100\nX-Mark: 7\n\nTuesday.\n")
        self.assertEqual(item["subject"], "Plans")
        self.assertEqual((item["bodyFormat"], item["body"]), (1, "Tuesday.\r\n"))
        self.assertEqual((item["fromName"], item["account"]), ("Anna", "anna@example.com"))
        self.assertEqual([(r["name"], r["address"], r["type"]) for r in item["recipients"]],
                         [("ben@example.com", "ben@example.com", 1), ("Eva", "eva@example.com", 2)])
        self.assertEqual(item["headers"], [["Date", "Mon, 3 Mar 2025 09:12:44 +0100"], ["X-Mark", "7"]])

    def test_encoded_words_of_one_character_set_may_split_a_character(self):
        data = "日本".encode("utf-8")
        words = " ".join(f"=?utf-8?B?{base64.b64encode(p).decode()}?=" for p in (data[:4], data[4:]))
        self.assertEqual(self.open(f"Subject: {words}\n\n")["subject"], "日本")

    def test_character_sets(self):
        for charset in ("koi8-r", "windows-1251", "utf-8"):
            item = self.open(f"Subject: x\nContent-Type: text/plain; charset={charset}\n\n".encode() +
                             "Привет".encode(charset))
            self.assertEqual(item["body"], "Привет")

    def test_broken_character_sets_lose_characters_and_not_the_mail(self):
        head = "Subject: =?nonsense?Q?x=E9?=\nContent-Type: text/plain; charset="
        self.assertEqual(self.open(f"{head}nonsense\n\n".encode() + b"caf\xe9")["body"], "caf\u00e9")
        self.assertEqual(self.open(f"{head}us-ascii\n\n".encode() + "é".encode())["body"], "é")
        self.assertEqual(self.open(f"{head}utf-8\n\n".encode() + b"a\xffb")["body"], "a\ufffdb")

    def test_raw_bytes_in_headers(self):
        self.assertEqual(self.open("Subject: Grüße\n\n".encode("utf-8"))["subject"], "Grüße")
        self.assertEqual(self.open("Subject: Grüße\n\n".encode("cp1252"))["subject"], "Grüße")

    def test_group_keeps_its_name_and_an_empty_one_names_nobody(self):
        item = self.open("To: Crew: Ann <a@example.com>, b@example.com;\nBcc: undisclosed-recipients:;\n\n")
        self.assertEqual([(r["group"], r["address"]) for r in item["recipients"]],
                         [("Crew", "a@example.com"), ("Crew", "b@example.com")])

    def test_body_comes_from_the_alternative_and_pictures_from_the_related_part(self):
        item = self.open((DEMO / "02-html-pictures.eml").read_bytes())
        self.assertEqual(item["bodyFormat"], 2)
        self.assertIn('src="cid:logo.5d21@fjordline"', item["htmlBody"])
        self.assertTrue(item["body"].startswith("February closed"))
        self.assertEqual([a["contentId"] for a in item["attachments"]],
                         ["logo.5d21@fjordline", "chart.5d21@fjordline"])
        for attachment in item["attachments"]:
            self.assertTrue(base64.b64decode(attachment["content"]).startswith(b"\x89PNG\r\n"))

    def test_text_that_is_attached_is_no_body(self):
        item = self.open('Subject: x\nContent-Type: multipart/mixed; boundary=b\n\n--b\n'
                         'Content-Disposition: attachment; filename="a.txt"\n\nattached\n--b\n\nbody\n--b\n\nfooter\n--b--\n')
        self.assertEqual(item["body"], "body")
        self.assertEqual([base64.b64decode(a["content"]) for a in item["attachments"]], [b"attached", b"footer"])

    def test_attached_mail_stays_as_it_was(self):
        inner = "Subject:  odd   blanks\nX-Long: " + "word " * 40 + "\n\nText\n"
        item = self.open("Subject: x\nContent-Type: multipart/mixed; boundary=b\n\n--b\n"
                         f"Content-Type: message/rfc822\n\n{inner}\n--b--\n")
        self.assertEqual(base64.b64decode(item["attachments"][0]["content"]).decode(), inner)
        self.assertEqual((item["attachments"][0]["type"], item["attachments"][0]["fileName"]), (5, "odd   blanks.eml"))

    def test_rich_text(self):
        item = self.open("Subject: x\nContent-Type: multipart/alternative; boundary=b\n\n--b\n\ntext\n--b\n"
                         "Content-Type: text/rtf\n\n{\\rtf1 text}\n--b--\n")
        self.assertEqual((item["bodyFormat"], base64.b64decode(item["rtfBody"])), (3, b"{\\rtf1 text}"))


class RefuseTest(MailTest):
    HEAD = "From: a@example.com\nSubject: x\n"

    def test_empty_file(self):
        self.refused("open", "", "the file is empty")

    def test_what_is_no_mail(self):
        self.refused("open", "just some words\nand more\n", "line 1: no header stands there, so this is no mail")
        self.refused("open", b"\x89PNG\r\n\x1a\n\0\0", "line 1: no header stands there, so this is no mail")

    def test_missing_file(self):
        run = self.run_program("open", self.folder / "none.eml", self.folder / "target")
        self.assertEqual(run.stderr, f"mail.py: {self.folder}/none.eml: No such file or directory\n")
        self.assertEqual(run.returncode, 1)

    def test_multipart_without_boundary(self):
        self.refused("open", self.HEAD + "Content-Type: multipart/mixed\n\nx\n",
                     "section 1, multipart/mixed: a multipart that names no boundary")

    def test_multipart_whose_boundary_never_appears(self):
        self.refused("open", self.HEAD + "Content-Type: multipart/mixed; boundary=zz\n\nx\n",
                     "line 3, boundary zz: a multipart whose boundary never appears")

    def test_multipart_that_is_never_closed(self):
        self.refused("open", self.HEAD + "Content-Type: multipart/mixed; boundary=zz\n\n--zz\n\nx\n",
                     "line 3, boundary zz: a multipart whose boundary is never closed")

    def test_base64_that_cannot_be_decoded(self):
        head = self.HEAD + "Content-Type: multipart/mixed; boundary=zz\n\n--zz\n\nx\n--zz\nContent-Type: image/png\n"
        head += "Content-Disposition: attachment; filename=a.png\nContent-Transfer-Encoding: base64\n\n"
        where = "section 1.2, image/png (a.png): "
        self.refused("open", head + "YW*!JjZA==\n--zz--\n", where + "base64 with characters that do not belong there")
        self.refused("open", head + "YWJjZ\n--zz--\n", where + "base64 that breaks off")

    def test_unknown_transfer_encoding(self):
        self.refused("open", self.HEAD + "Content-Transfer-Encoding: rot13\n\nx\n",
                     "section 1, text/plain: the transfer encoding rot13 is not known")

    def test_items_that_cannot_be_written(self):
        self.refused("write", "{", "line 1, column 2: Expecting property name enclosed in double quotes")
        self.refused("write", b"\xff", "byte 0: not UTF-8")
        self.refused("write", "[]", "the item is not an object")
        self.refused("write", '{"subject": 5}', "subject is not a text")
        self.refused("write", '{"attachments": [{"content": "*"}]}', "attachments[0].content is not base64")

    def test_target_that_cannot_be_written_keeps_what_was_there(self):
        source = self.folder / "in.eml"
        source.write_text("Subject: x\n\n")
        run = self.run_program("open", source, self.folder / "no" / "where.json")
        self.assertEqual(run.returncode, 1)
        self.assertIn("cannot be written", run.stderr)

    def test_usage(self):
        self.assertEqual(self.run_program("nonsense").returncode, 2)


class WriteTest(MailTest):
    def test_every_demo_mail_survives_the_round_trip(self):
        mails = sorted(mail for mail in DEMO.glob("*.eml") if b"text/calendar" not in mail.read_bytes())
        self.assertEqual(len(mails), 13)
        for mail in mails:
            with self.subTest(mail.name):
                item = self.open(mail.read_bytes())
                again = self.open(self.write(item))
                for field in item.keys() - {"headers"}:
                    self.assertEqual(again[field], item[field], field)

    def test_any_mail_program_reads_what_is_written(self):
        message = self.parsed({
            "subject": "Gruß \U0001f33b", "body": "text", "htmlBody": "<p>ü</p>", "fromName": "Zoë", "account": "z@example.com",
            "recipients": [{"name": "Ben", "address": "b@example.com", "type": 1},
                           {"name": "Eva, M.", "address": "e@example.com", "type": 2}],
            "attachments": [{"fileName": "{1}.cip", "displayName": "Preisliste für alle.csv", "content": "AAH/"}],
        })
        self.assertEqual(message["subject"], "Gruß \U0001f33b")
        self.assertEqual(message["from"].addresses[0].display_name, "Zoë")
        self.assertEqual(message["cc"].addresses[0].display_name, "Eva, M.")
        self.assertEqual(message.get_body(("html",)).get_content().strip(), "<p>ü</p>")
        (attachment,) = message.iter_attachments()
        self.assertEqual(attachment.get_filename(), "Preisliste für alle.csv")
        self.assertEqual(attachment.get_payload(decode=True), b"\x00\x01\xff")

    def test_line_breaks_in_fields_make_no_headers(self):
        message = self.parsed({"subject": "a\r\nBcc: evil@example.com", "body": "x",
                               "headers": [["X-A", "b\r\nX-Evil: 1"], ["no name", "x"]]})
        self.assertIsNone(message["bcc"])
        self.assertIsNone(message["x-evil"])

    def test_recipient_of_the_directory_is_written_with_his_smtp_address(self):
        message = self.parsed({"subject": "x", "recipients": [
            {"name": "Eva", "address": "/o=x/cn=eva", "addressType": "EX", "type": 1,
             "properties": {"0x39FE001F": "eva@example.com"}}]})
        self.assertEqual(message["to"].addresses[0].addr_spec, "eva@example.com")

    def test_lone_surrogates_do_not_stop_a_mail(self):
        self.assertEqual(self.parsed({"subject": "a\ud800b", "body": "\udc00"})["subject"], "a\ufffdb")


if __name__ == "__main__":
    unittest.main()
