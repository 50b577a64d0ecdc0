"""Invitations, responses and cancellations as the outside world writes them: iCalendar (RFC 5545, RFC 5546)."""

import base64
import binascii
import re

# The role of an attendee in a meeting, as Outlook numbers it: required, optional, resource.
REQUIRED, OPTIONAL, RESOURCE = 1, 2, 3
RESPONSES = {"ACCEPTED": "Pos", "DECLINED": "Neg", "TENTATIVE": "Tent"}
CLASS = "IPM.Schedule.Meeting."
SERIES, EXCEPTION = 1, 3
# What the item has no field for travels along as headers of this name, the whole line of each.
KEPT = "X-Calendar-Line"
KEPT_PROPERTIES = {"UID", "SEQUENCE", "RRULE", "EXDATE", "RECURRENCE-ID", "DTSTART", "DTEND", "DURATION", "ORGANIZER"}


class CalendarError(Exception):
    """What is wrong with a calendar, and where in it."""


class Line:
    """One content line, unfolded: name, parameters, value."""

    PATTERN = re.compile(r'([A-Za-z0-9-]+)((?:;[A-Za-z0-9-]+=(?:"[^"]*"|[^";:,]*)(?:,(?:"[^"]*"|[^";:,]*))*)*):(.*)', re.S)

    def __init__(self, text, number):
        match = self.PATTERN.fullmatch(text)
        if match is None:
            raise CalendarError(f"line {number}: neither a property nor the continuation of one")
        self.text = text
        self.name = match[1].upper()
        self.parameters = {name.upper(): value.strip('"')
                           for name, value in re.findall(r';([A-Za-z0-9-]+)=("[^"]*"|[^;:]*)', match[2])}
        self.value = match[3]

    def plain(self):
        """The value of a text property, escapes resolved."""
        return re.sub(r"\\(.)", lambda m: "\r\n" if m[1] in "nN" else m[1], self.value, flags=re.S)

    def address(self):
        return re.sub(r"^mailto:", "", self.value, flags=re.I)


def lines_of(text):
    """The content lines of a text, folded ones joined."""
    joined = []
    for number, line in enumerate(re.split(r"\r?\n", text), 1):
        if line[:1] in (" ", "\t") and joined:
            joined[-1] = (joined[-1][0] + line[1:], joined[-1][1])
        elif line:
            joined.append((line, number))
    return [Line(line, number) for line, number in joined]


class Meeting:
    """The first event of a calendar, with the calendar's method."""

    def __init__(self, text):
        lines = lines_of(text.removeprefix("\ufeff"))
        if not lines or (lines[0].name, lines[0].value.upper()) != ("BEGIN", "VCALENDAR"):
            raise CalendarError("line 1: no calendar begins there")
        self.method = next((line.value.upper() for line in lines if line.name == "METHOD"), "REQUEST")
        self.event = self.first_event(lines)
        if not self.event:
            raise CalendarError("the calendar holds no event")

    @staticmethod
    def first_event(lines):
        event, depth = [], 0  # depth: of an event's own parts, such as its alarms
        for line in lines:
            if line.name == "BEGIN" and line.value.upper() == "VEVENT":
                depth = 1
            elif depth and line.name in ("BEGIN", "END"):
                depth += 1 if line.name == "BEGIN" else -1
                if depth == 0:
                    return event
            elif depth == 1:
                event.append(line)
        if depth:
            raise CalendarError("the event is never closed")
        return event

    def all(self, name):
        return [line for line in self.event if line.name == name]

    def text(self, name):
        return next((line.plain() for line in self.all(name)), "")

    def fields(self):
        """The fields of an item that do not depend on who sends it."""
        state = EXCEPTION if self.all("RECURRENCE-ID") else SERIES if self.all("RRULE") else 0
        return {
            "start": moment(self.all("DTSTART")),
            "end": moment(self.all("DTEND")),
            "location": self.text("LOCATION"),
            "recurrenceState": state,
            "headers": [[KEPT, line.text] for line in self.event if line.name in KEPT_PROPERTIES],
        }

    def message_class(self):
        if self.method == "CANCEL":
            return CLASS + "Canceled"
        if self.method == "REPLY":
            answers = [line.parameters.get("PARTSTAT", "").upper() for line in self.all("ATTENDEE")]
            return CLASS + "Resp." + next((RESPONSES[a] for a in answers if a in RESPONSES), "Tent")
        return CLASS + "Request"

    def people(self):
        """Who sends it, and whom to: (name, address), and recipients."""
        organizer = next(((line.parameters.get("CN", ""), line.address()) for line in self.all("ORGANIZER")), None)
        attendees = [(line.parameters.get("CN", ""), line.address(), role(line)) for line in self.all("ATTENDEE")]
        if self.method == "REPLY":
            sender = attendees[0][:2] if attendees else None
            attendees = [(*organizer, REQUIRED)] if organizer else []
        else:
            sender = organizer
        return sender, [{"name": name or address, "address": address, "type": kind, "resolved": bool(address)}
                        for name, address, kind in attendees if (name, address) != sender]

    def attachments(self):
        found = []
        for number, line in enumerate(self.all("ATTACH"), 1):
            if line.parameters.get("ENCODING", "").upper() != "BASE64":
                continue  # a reference to elsewhere
            try:
                content = base64.b64decode("".join(line.value.split()), validate=True)
            except binascii.Error:
                raise CalendarError(f"ATTACH {number}: base64 that cannot be decoded") from None
            name = line.parameters.get("FILENAME") or line.parameters.get("X-FILENAME") or f"attachment-{number}.bin"
            found.append({"fileName": re.sub(r"[/\\]", "_", name), "type": 1,
                          "mimeType": line.parameters.get("FMTTYPE", ""),
                          "content": base64.b64encode(content).decode("ascii")})
        return found


def role(line):
    if line.parameters.get("CUTYPE", "").upper() in ("RESOURCE", "ROOM"):
        return RESOURCE
    return OPTIONAL if line.parameters.get("ROLE", "").upper() == "OPT-PARTICIPANT" else REQUIRED


def moment(lines):
    """20261130T100000 as 2026-11-30T10:00; a whole day as 2026-11-30."""
    match = re.match(r"(\d{4})(\d\d)(\d\d)(?:T(\d\d)(\d\d))?", lines[0].value) if lines else None
    if match is None:
        return ""
    day = "-".join(match.groups()[:3])
    return f"{day}T{match[4]}:{match[5]}" if match[4] else day


def as_item(item, meeting):
    """Makes an item that was read from a mail the meeting that its calendar part is. What a user would send of it is,
    for an invitation, the appointment itself."""
    fields = meeting.fields()
    item = {**item, **fields, "headers": item.get("headers", []) + fields["headers"]}
    summary = meeting.text("SUMMARY")
    item["messageClass"] = meeting.message_class()
    item["subject"] = item.get("subject") or summary
    item["body"] = item.get("body") or meeting.text("DESCRIPTION")
    if item["messageClass"] == CLASS + "Request" and item["subject"] == summary:
        return {**item, "kind": "appointment", "messageClass": ""}
    appointment = {**item, "kind": "appointment", "messageClass": "", "subject": summary or item["subject"]}
    return {**item, "kind": "meeting", "related": [appointment]}


def open_calendar(text):
    """An .ics file as an item."""
    meeting = Meeting(text)
    sender, recipients = meeting.people()
    return as_item({
        "bodyFormat": 1,
        "fromName": sender[0] if sender else "",
        "account": sender[1] if sender else None,
        "recipients": recipients,
        "attachments": meeting.attachments(),
    }, meeting)


def method_of(item):
    message_class = item.get("messageClass", "")
    if message_class.startswith(CLASS + "Canceled"):
        return "CANCEL"
    return "REPLY" if message_class.startswith(CLASS + "Resp.") else "REQUEST"


def escape(text):
    return re.sub(r"\r\n|\r|\n", r"\\n", re.sub(r"([\\;,])", r"\\\1", text))


def parameter(text):
    """A value that may stand in a parameter: no quotes, no control characters."""
    return re.sub(r'[\x00-\x1f\x7f"]', "'", text)


def fold(line):
    """At most 75 bytes on a line, no character split."""
    pieces, piece = [], ""
    for character in line:
        if len((piece + character).encode("utf-8")) > 74:
            pieces.append(piece)
            piece = ""
        piece += character
    return "\r\n ".join([*pieces, piece])


def write_calendar(item):
    """The calendar part of a delivered meeting: what the item says, and the lines that it was given."""
    method = method_of(item)
    kept = [re.sub(r"[\x00-\x1f\x7f]", " ", str(value)) for name, value in item.get("headers", []) if name == KEPT]
    names = {re.split("[;:]", line, maxsplit=1)[0].upper() for line in kept}
    lines = ["BEGIN:VCALENDAR", "PRODID:-//stand-in Outlook//EN", "VERSION:2.0", "METHOD:" + method, "BEGIN:VEVENT",
             *kept]
    if "UID" not in names:
        lines.append("UID:" + parameter(item.get("relatedId") or item.get("entryId") or "unknown"))
    for name, field in (("DTSTART", "start"), ("DTEND", "end")):
        digits = re.sub(r"[^0-9T]", "", item.get(field) or "")
        if name not in names and digits:
            lines.append(f"{name}:{digits}00" if "T" in digits else f"{name};VALUE=DATE:{digits}")
    if "ORGANIZER" not in names and item.get("account") and method != "REPLY":
        lines.append(f'ORGANIZER;CN="{parameter(item.get("fromName") or "")}":mailto:{parameter(item["account"])}')
    if method == "REPLY":
        status = next((s for s, word in RESPONSES.items() if item["messageClass"].endswith("." + word)), "TENTATIVE")
        lines.append(f'ATTENDEE;PARTSTAT={status}:mailto:{parameter(item.get("account") or "")}')
    else:
        for recipient in item.get("recipients", []):
            part = {OPTIONAL: "OPT-PARTICIPANT", RESOURCE: "NON-PARTICIPANT"}.get(recipient.get("type"), "REQ-PARTICIPANT")
            kind = ";CUTYPE=RESOURCE" if recipient.get("type") == RESOURCE else ""
            lines.append(f'ATTENDEE;ROLE={part}{kind};CN="{parameter(recipient.get("name") or "")}"'
                         f':mailto:{parameter(recipient.get("address") or "")}')
    lines += ["SUMMARY:" + escape(item.get("subject") or ""), "DESCRIPTION:" + escape(item.get("body") or "")]
    if item.get("location"):
        lines.append("LOCATION:" + escape(item["location"]))
    lines += ["END:VEVENT", "END:VCALENDAR"]
    return "".join(fold(line) + "\r\n" for line in lines)
