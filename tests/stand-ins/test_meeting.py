"""Invitations of the outside world as items of the stand-in Outlook, and back."""
import base64
import unittest

from test_mail import DEMO, MailTest


def calendar(*lines, method="REQUEST"):
    return "\r\n".join(["BEGIN:VCALENDAR", "METHOD:" + method, "BEGIN:VEVENT", *lines, "END:VEVENT", "END:VCALENDAR",
                        ""]).encode("utf-8")


def mail(subject, data, method="REQUEST", disposition=""):
    return (f"From: Ben <ben@b.example>\r\nTo: anna@a.example\r\nSubject: {subject}\r\nMIME-Version: 1.0\r\n"
            'Content-Type: multipart/alternative; boundary="b"\r\n\r\n'
            "--b\r\nContent-Type: text/plain\r\n\r\nSee you.\r\n"
            f"--b\r\nContent-Type: text/calendar; charset=utf-8{method and '; method=' + method}\r\n{disposition}\r\n"
            ).encode() + data + b"--b--\r\n"


class MeetingTest(MailTest):
    def test_a_calendar_file_is_an_appointment_to_be_sent(self):
        item = self.open((DEMO / "16-invitation.ics").read_bytes())
        self.assertEqual(item["kind"], "appointment")
        self.assertEqual(item["subject"], "Review of the filter trial")
        self.assertEqual(item["body"], "We go through the numbers of the second trial.\r\n\r\n"
                                       "What is shown there is confidential until the paper is out.")
        self.assertEqual((item["start"], item["end"]), ("2025-03-18T10:00", "2025-03-18T11:30"))
        self.assertEqual(item["location"], "Room 4, second floor")
        self.assertEqual((item["fromName"], item["account"]), ("Dr. Miriam Adler", "miriam.adler@clearwater-labs.example"))
        self.assertEqual([(r["address"].split("@")[0], r["type"]) for r in item["recipients"]],
                         [("paul.nyberg", 1), ("jana.kos", 2), ("room-4", 3)])

    def test_a_mail_with_an_invitation_is_an_appointment_to_be_sent(self):
        item = self.open(mail("Review", calendar("SUMMARY:Review", "DTSTART;VALUE=DATE:20261130")))
        self.assertEqual((item["kind"], item["subject"], item["body"]), ("appointment", "Review", "See you."))
        self.assertEqual(item["start"], "2026-11-30")
        self.assertEqual(item["recipients"][0]["address"], "anna@a.example")

    def test_another_subject_makes_it_a_forwarded_meeting_with_its_appointment(self):
        item = self.open(mail("FW: Review", calendar("SUMMARY:Review")))
        self.assertEqual((item["kind"], item["messageClass"]), ("meeting", "IPM.Schedule.Meeting.Request"))
        (appointment,) = item["related"]
        self.assertEqual((appointment["kind"], appointment["subject"]), ("appointment", "Review"))

    def test_a_reply_is_a_response_by_its_words(self):
        for status, word in (("ACCEPTED", "Pos"), ("DECLINED", "Neg"), ("TENTATIVE", "Tent"), ("DELEGATED", "Tent")):
            answer = calendar("SUMMARY:Review", f"ATTENDEE;PARTSTAT={status}:mailto:ben@b.example", method="REPLY")
            item = self.open(mail("Accepted: Review", answer, "REPLY"))
            self.assertEqual(item["messageClass"], "IPM.Schedule.Meeting.Resp." + word)
            self.assertEqual(item["related"][0]["subject"], "Review")

    def test_a_reply_as_a_file_goes_from_the_attendee_to_the_organizer(self):
        item = self.open(calendar("SUMMARY:Review", "ORGANIZER:mailto:anna@a.example",
                                  "ATTENDEE;PARTSTAT=ACCEPTED:mailto:ben@b.example", method="REPLY"))
        self.assertEqual(item["account"], "ben@b.example")
        self.assertEqual([r["address"] for r in item["recipients"]], ["anna@a.example"])

    def test_a_cancellation_is_one(self):
        item = self.open(mail("Canceled: Review", calendar("SUMMARY:Review", method="CANCEL"), "CANCEL"))
        self.assertEqual((item["kind"], item["messageClass"]), ("meeting", "IPM.Schedule.Meeting.Canceled"))

    def test_a_series_and_one_of_it_are_told_apart(self):
        for line, state in (("RRULE:FREQ=DAILY", 1), ("RECURRENCE-ID:20261130T090000Z", 3), ("SEQUENCE:1", 0)):
            self.assertEqual(self.open(calendar("SUMMARY:x", line))["recurrenceState"], state)

    def test_a_calendar_that_is_merely_attached_stays_an_attachment(self):
        for method, disposition in (("REQUEST", "Content-Disposition: attachment; filename=a.ics\r\n"), ("", "")):
            item = self.open(mail("Review", calendar("SUMMARY:Review"), method, disposition))
            self.assertEqual(item["kind"], "mail")
            self.assertEqual(len(item["attachments"]), 1)

    def test_attachments_of_a_calendar_come_along_and_references_do_not(self):
        data = base64.b64encode(b"\x00plan").decode()
        item = self.open(calendar("SUMMARY:x", "ATTACH:https://a.example/plan", "ATTACH;ENCODING=BASE64;VALUE=BINARY;"
                                  f"X-FILENAME=\"plan.bin\":{data}"))
        self.assertEqual([(a["fileName"], a["content"]) for a in item["attachments"]], [("plan.bin", data)])

    def test_what_an_alarm_says_is_not_the_events(self):
        item = self.open(calendar("SUMMARY:x", "BEGIN:VALARM", "DESCRIPTION:ring", "END:VALARM", "DESCRIPTION:text"))
        self.assertEqual(item["body"], "text")

    def test_a_calendar_that_is_none_gets_one_line(self):
        self.refused("open", b"BEGIN:VCALENDAR\r\nnonsense\r\n",
                     "line 2: neither a property nor the continuation of one")
        self.refused("open", b"BEGIN:VCALENDAR\r\nEND:VCALENDAR\r\n", "the calendar holds no event")
        self.refused("open", b"BEGIN:VCALENDAR\r\nBEGIN:VEVENT\r\nSUMMARY:x\r\n", "the event is never closed")
        self.refused("open", calendar("ATTACH;ENCODING=BASE64:*"), "ATTACH 1: base64 that cannot be decoded")

    def delivered(self, **fields):
        return self.parsed({"kind": "meeting", "messageClass": "IPM.Schedule.Meeting.Request", "subject": "Review",
                            "body": "Room 4.", "account": "anna@a.example", "start": "2026-11-30T10:00",
                            "relatedId": "0042", "recipients": [{"address": "ben@b.example", "type": 2}], **fields})

    @staticmethod
    def lines_of(message):
        (part,) = [part for part in message.walk() if part.get_content_type() == "text/calendar"]
        return part.get_param("method"), part.get_content().replace("\r\n", "\n").replace("\n ", "").split("\n")

    def test_a_delivered_meeting_is_read_by_any_calendar(self):
        method, lines = self.lines_of(self.delivered(subject="Room; four, \u00fc"))
        self.assertEqual(method, "REQUEST")
        for line in ("METHOD:REQUEST", "UID:0042", "DTSTART:20261130T100000", "SUMMARY:Room\\; four\\, \u00fc",
                     "DESCRIPTION:Room 4.", 'ATTENDEE;ROLE=OPT-PARTICIPANT;CN="":mailto:ben@b.example'):
            self.assertIn(line, lines)

    def test_a_delivered_response_says_what_its_sender_answers(self):
        method, lines = self.lines_of(self.delivered(messageClass="IPM.Schedule.Meeting.Resp.Neg"))
        self.assertEqual(method, "REPLY")
        self.assertIn("ATTENDEE;PARTSTAT=DECLINED:mailto:anna@a.example", lines)

    def test_a_label_reaches_the_calendar_and_the_rest_of_it_stays(self):
        item = self.open((DEMO / "16-invitation.ics").read_bytes())
        message = self.parsed({**item, "kind": "meeting", "messageClass": "IPM.Schedule.Meeting.Request",
                               "subject": "[Internal] Review"})
        _, lines = self.lines_of(message)
        for line in ("UID:filter-review-2025-03@clearwater-labs.example", "SUMMARY:[Internal] Review",
                     "DTSTART;TZID=Europe/Berlin:20250318T100000"):
            self.assertIn(line, lines)
        self.assertNotIn("X-Calendar-Line", message)

    def test_an_invitation_survives_the_round_trip(self):
        item = self.open((DEMO / "16-invitation.ics").read_bytes())
        again = self.open(self.write(item))
        for field in ("kind", "subject", "body", "start", "end", "location", "recurrenceState", "account"):
            self.assertEqual(again[field], item[field], field)


if __name__ == "__main__":
    unittest.main()
