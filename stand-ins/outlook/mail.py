#!/usr/bin/env python3
"""Mails of the outside world for the stand-in Outlook.

    mail.py open MAIL.eml ITEM.json     a MIME message becomes an item that outlook.exe can send, and so does an
                                        invitation: an .ics file, or a mail with such a part
    mail.py write ITEM.json MAIL.eml    a delivered item becomes a MIME message that any mail program opens

A file that cannot be read or written gives one line on standard error and status 1; nothing is left half-written.
"""

import base64
import binascii
import email
import email.errors
import email.header
import email.headerregistry
import email.message
import email.policy
import email.utils
import json
import mimetypes
import os
import quopri
import re
import sys
import tempfile

import calendar_part

PLAIN, HTML, RICH_TEXT = 1, 2, 3
BY_VALUE, EMBEDDED_ITEM = 1, 5
RECIPIENT_HEADERS = {"to": 1, "cc": 2, "bcc": 3}
# Headers that become fields of the item; every other one is kept as it stands.
# Tells what a file is if it is no mail: "task", one that is assigned to whom it is addressed to.
KIND_HEADER = "X-Item-Kind"
OWN_HEADERS = {"from", "subject", "mime-version", KIND_HEADER.lower(), *RECIPIENT_HEADERS}
# What is told by a calendar part instead.
CALENDAR_KINDS = ("meeting", "appointment")
SMTP_ADDRESS = "0x39FE001F"

# What the parser forgives and a reader must not: parts would silently be missing or cut.
FATAL_DEFECTS = {
    email.errors.NoBoundaryInMultipartDefect: "a multipart that names no boundary",
    email.errors.StartBoundaryNotFoundDefect: "a multipart whose boundary never appears",
    email.errors.CloseBoundaryNotFoundDefect: "a multipart whose boundary is never closed",
    email.errors.MultipartInvariantViolationDefect: "a multipart without parts",
    email.errors.InvalidBase64CharactersDefect: "base64 with characters that do not belong there",
    email.errors.InvalidBase64PaddingDefect: "base64 that breaks off",
    email.errors.InvalidBase64LengthDefect: "base64 that breaks off",
}
ENCODINGS = {"", "7bit", "8bit", "binary", "quoted-printable", "base64", "x-uuencode", "uuencode", "x-uue", "uue"}

POLICY = email.policy.SMTP.clone(refold_source="none")


class MailError(Exception):
    """What is wrong with a file, and where in it."""


def clean(text):
    """The text without lone surrogates, which neither UTF-8 nor a mail can carry."""
    return text.encode("utf-16", "surrogatepass").decode("utf-16", "replace")


def one_line(text):
    """The text as a header can hold it: every control character and line end is a blank."""
    return re.sub(r"[\x00-\x1f\x7f\x85\u2028\u2029]+", " ", clean(text))


def decode_bytes(data, charset):
    """Text in a character set that may be unknown, wrong or missing."""
    for name in (charset, "utf-8"):
        try:
            return data.decode(name)
        except (LookupError, UnicodeDecodeError, TypeError, ValueError):
            continue
    try:
        return data.decode(charset or "cp1252", "replace")
    except (LookupError, ValueError):
        return data.decode("cp1252", "replace")


# ---------------------------------------------------------------------------------------------------------- opening


def unfold(value):
    """A header's value as it stands in the file, on one line; bytes beyond ASCII by the best guess."""
    text = re.sub(r"\r?\n(?=[ \t])", "", str(value)).strip()
    return decode_bytes(text.encode("utf-8", "surrogateescape"), None)


def raw_headers(part, name):
    return [unfold(value) for key, value in part.raw_items() if key.lower() == name]


def raw_header(part, name):
    """The first header of that name, or nothing."""
    return next(iter(raw_headers(part, name)), "")


def decode_words(text):
    """Encoded words resolved; those of one character set are joined first, as they may split a character."""
    try:
        chunks = email.header.decode_header(text)
    except email.errors.HeaderParseError:
        return text
    return "".join(c if isinstance(c, str) else decode_bytes(c, charset or "utf-8") for c, charset in chunks)


def addresses(part, name):
    """(group, display name, address) of an address header."""
    found = []
    for text in raw_headers(part, name):
        try:
            for group in POLICY.header_factory(name, text).groups:
                found += [(group.display_name or "", a.display_name, a.addr_spec) for a in group.addresses]
        except Exception:  # the header parser fails in many ways on what is no address
            found += [("", decode_words(n), a) for n, a in email.utils.getaddresses([text])]
    return [(clean(group), clean(n), "" if a == "<>" else clean(a)) for group, n, a in found]


def line_of(data, needle):
    """1-based line of the first occurrence."""
    at = data.find(needle)
    return data.count(b"\n", 0, at) + 1 if at >= 0 else None


def split_parts(raw, boundary):
    """The parts of a multipart as they stand in the file."""
    delimiter = re.compile(rb"(?:\A|\r?\n)--" + re.escape(boundary.encode("ascii", "replace")) +
                           rb"(--)?[ \t]*(?=\r?\n|\Z)")
    found = []
    for match in delimiter.finditer(raw):
        found.append(match)
        if match[1]:
            break
    return [raw[a.end():b.start()].removeprefix(b"\r").removeprefix(b"\n") for a, b in zip(found, found[1:])]


def body_of(raw):
    """What stands behind the headers."""
    blank = re.search(rb"(?:\A|\n)\r?\n", raw)
    return raw[blank.end():] if blank else b""


class Opener:
    """Takes a message apart into an item."""

    def __init__(self, data):
        self.data = data
        self.bodies = {}
        self.attachments = []
        self.meeting = None
        self.message = email.message_from_bytes(data, policy=POLICY)

    def item(self):
        self.check_is_mail()
        self.take(self.message, self.data, "1", own=True)
        item = self.mail()
        return calendar_part.as_item(item, self.meeting) if self.meeting else item

    def mail(self):
        bodies = self.bodies
        sender = next(iter(addresses(self.message, "from")), None)
        rich = "text/rtf" in bodies
        return {
            "kind": self.kind(),
            "subject": clean(decode_words(raw_header(self.message, "subject"))),
            "bodyFormat": RICH_TEXT if rich else HTML if "text/html" in bodies else PLAIN,
            "body": bodies.get("text/plain", ""),
            "htmlBody": "" if rich else bodies.get("text/html", ""),
            "rtfBody": bodies.get("text/rtf", ""),
            "fromName": sender[1] if sender else "",
            "account": sender[2] if sender else None,
            "autoForwarded": raw_header(self.message, "autoforwarded").lower() == "true",
            "recipients": self.recipients(),
            "attachments": self.attachments,
            "headers": self.other_headers(),
        }

    def kind(self):
        kind = raw_header(self.message, KIND_HEADER.lower()) or "mail"
        if kind not in ("mail", "task"):
            raise MailError(f'{KIND_HEADER} says "{kind}", which is neither "mail" nor "task"')
        return kind

    def check_is_mail(self):
        if not self.data.strip():
            raise MailError("the file is empty")
        first = self.data.lstrip(b"\r\n").split(b"\n", 1)[0]
        if not self.message.keys() or re.match(rb"(From )|([!-9;-~]+[ \t]*:)", first) is None:
            raise MailError("line 1: no header stands there, so this is no mail")

    def fail(self, part, where, what):
        boundary = part.get_boundary() if part.is_multipart() or part.get_content_maintype() == "multipart" else None
        line = line_of(self.data, boundary.encode("ascii", "replace")) if boundary else None
        place = f"line {line}, boundary {boundary}" if line else f"section {where}, {part.get_content_type()}"
        name = part.get_filename()
        raise MailError(f"{place}{f' ({clean(name)})' if name else ''}: {what}")

    def check(self, part, where):
        for defect in part.defects:
            for kind, what in FATAL_DEFECTS.items():
                if isinstance(defect, kind):
                    self.fail(part, where, what)

    def recipients(self):
        return [
            {"name": name or address, "address": address, "type": kind, "resolved": bool(address), "group": group}
            for header, kind in RECIPIENT_HEADERS.items()
            for group, name, address in addresses(self.message, header)
        ]

    def other_headers(self):
        return [
            [name, clean(unfold(value))]
            for name, value in self.message.raw_items()
            if name.lower() not in OWN_HEADERS and not name.lower().startswith("content-")
        ]

    def take(self, part, raw, where, own):
        """Sorts a part, with its raw form, into bodies and attachments; own: it may still be the body of the mail."""
        self.check(part, where)
        kind = part.get_content_type()
        if kind == "message/rfc822":
            self.attach_message(part, raw, where)
        elif part.get_content_maintype() == "multipart":
            if not part.is_multipart():
                self.fail(part, where, "a multipart without parts")
            related = kind == "multipart/related"
            children = part.get_payload()
            pieces = split_parts(raw, part.get_boundary())
            if len(pieces) != len(children):
                self.fail(part, where, "a multipart whose boundaries are not in order")
            for number, (child, piece) in enumerate(zip(children, pieces), 1):
                self.take(child, piece, f"{where}.{number}", own and (number == 1 or not related))
        elif own and self.is_invitation(part, kind):
            try:
                self.meeting = calendar_part.Meeting(decode_bytes(self.payload(part, where), part.get_content_charset()))
            except calendar_part.CalendarError as fault:
                self.fail(part, where, str(fault))
        elif own and self.is_body(part, kind):
            self.bodies[self.body_kind(kind)] = self.body_text(part, where, kind)
        else:
            self.attach(part, where)

    @staticmethod
    def body_kind(kind):
        return "text/rtf" if kind == "application/rtf" else kind

    def is_invitation(self, part, kind):
        """What a mail program shows as a meeting; a calendar file that is merely attached stays an attachment."""
        return (
            kind == "text/calendar"
            and self.meeting is None
            and part.get_param("method") is not None
            and part.get_content_disposition() != "attachment"
        )

    def is_body(self, part, kind):
        return (
            self.body_kind(kind) in ("text/plain", "text/html", "text/rtf")
            and self.body_kind(kind) not in self.bodies
            and part.get_content_disposition() != "attachment"
            and part.get_filename() is None
        )

    def body_text(self, part, where, kind):
        data = self.payload(part, where)
        if self.body_kind(kind) == "text/rtf":
            return base64.b64encode(data).decode("ascii")
        text = decode_bytes(data, part.get_content_charset())
        return clean(re.sub(r"\r\n|\r|\n", "\r\n", text.removeprefix("\ufeff")))

    def payload(self, part, where):
        encoding = raw_header(part, "content-transfer-encoding").split(";")[0].strip().lower()
        if encoding not in ENCODINGS:
            self.fail(part, where, f"the transfer encoding {encoding} is not known")
        data = part.get_payload(decode=True) or b""
        self.check(part, where)
        return data

    def attach(self, part, where):
        kind = part.get_content_type()
        charset = part.get_content_charset()
        extension = mimetypes.guess_extension(kind) or ".bin"
        name = decode_words(part.get_filename() or "") or f"attachment-{len(self.attachments) + 1}{extension}"
        self.attachments.append({
            "fileName": clean(name.replace("/", "_").replace("\\", "_")),
            "mimeType": kind + (f"; charset={charset}" if charset and kind.startswith("text/") else ""),
            "contentId": clean(raw_header(part, "content-id").strip("<> ")),
            "type": BY_VALUE,
            "content": base64.b64encode(self.payload(part, where)).decode("ascii"),
        })

    def attach_message(self, part, raw, where):
        data = body_of(raw)
        if raw_header(part, "content-transfer-encoding").lower() == "base64":
            try:
                data = base64.b64decode(b"".join(data.split()), validate=True)
            except binascii.Error:
                self.fail(part, where, "base64 that cannot be decoded")
        if not data.strip():
            self.fail(part, where, "an attached mail that is empty")
        inner = email.message_from_bytes(data, policy=POLICY)
        subject = clean(decode_words(raw_header(inner, "subject"))) or "message"
        name = part.get_filename() or re.sub(r'[\\/:*?"<>|\r\n\t]', "_", subject) + ".eml"
        self.attachments.append({
            "fileName": clean(decode_words(name)),
            "mimeType": "message/rfc822",
            "contentId": "",
            "type": EMBEDDED_ITEM,
            "content": base64.b64encode(data).decode("ascii"),
        })


def open_mail(source, target):
    data = read_bytes(source)
    if data.removeprefix(b"\xef\xbb\xbf").lstrip()[:15].upper() == b"BEGIN:VCALENDAR":
        try:
            item = calendar_part.open_calendar(clean(decode_bytes(data, None)))
        except calendar_part.CalendarError as fault:
            raise MailError(str(fault)) from None
    else:
        item = Opener(data).item()
    replace_file(target, json.dumps(item, ensure_ascii=False, indent=1).encode("utf-8"))


# ---------------------------------------------------------------------------------------------------------- writing


class Writer:
    """Puts an item together as a message."""

    def __init__(self, item):
        self.item = item
        self.attachments = [Attachment(a, f"attachments[{i}]") for i, a in enumerate(self.list_of("attachments"))]

    def text_of(self, field):
        value = self.item.get(field) or ""
        if not isinstance(value, str):
            raise MailError(f"{field} is not a text")
        return clean(value)

    def list_of(self, field):
        value = self.item.get(field) or []
        if not isinstance(value, list):
            raise MailError(f"{field} is not a list")
        return value

    def message(self):
        root = self.root()
        for name, value in self.headers():
            try:
                root[name] = value
            except Exception:  # a second one of a header that stands once, or a kept one that is malformed
                if name in ("From", "To", "Cc", "Bcc", "Subject"):
                    raise
        root["MIME-Version"] = "1.0"
        # Content headers last, as people expect to read who wrote what first.
        for name in ("Content-Type", "Content-Transfer-Encoding"):
            if name in root:
                value = root[name]
                del root[name]
                root[name] = value
        return root

    def as_bytes(self):
        message = self.message()
        try:
            return message.as_bytes(policy=POLICY)
        except UnicodeEncodeError:
            # An address beyond ASCII: such a mail goes by SMTPUTF8, with headers in UTF-8 (RFC 6532).
            return message.as_bytes(policy=POLICY.clone(utf8=True))

    def headers(self):
        kept = [(str(n), one_line(str(v))) for n, v in self.list_of("headers")]
        kept = [(n, v) for n, v in kept if re.fullmatch(r"[!-9;-~]+", n) and n != calendar_part.KEPT]
        sender = self.text_of("account")
        if sender:
            yield "From", [one_address(one_line(self.text_of("fromName")), one_line(sender))]
        for name, kind in (("To", 1), ("Cc", 2), ("Bcc", 3)):
            listed = self.recipients(kind)
            if listed:
                yield name, listed
        yield "Subject", one_line(self.text_of("subject"))
        kind = one_line(self.text_of("kind"))
        if kind not in ("", "mail", *CALENDAR_KINDS):
            yield KIND_HEADER, kind
        if not any(n.lower() == "date" for n, _ in kept):
            yield "Date", email.utils.formatdate(localtime=True)
        yield from kept

    def recipients(self, kind):
        listed = []
        groups = {}
        for recipient in self.list_of("recipients"):
            if recipient.get("type", 1) != kind:
                continue
            name, address = one_line(recipient.get("name") or ""), one_line(recipient.get("address") or "")
            if recipient.get("addressType", "SMTP") != "SMTP":
                address = clean(recipient.get("properties", {}).get(SMTP_ADDRESS, ""))
            entry = one_address("" if name == address else name, address)
            group = one_line(recipient.get("group") or "")
            if not group:
                listed.append(entry)
            elif group in groups:
                groups[group].append(entry)
            else:
                groups[group] = [entry]
                listed.append((group, groups[group]))
        return [email.headerregistry.Group(e[0], e[1]) if isinstance(e, tuple) else e for e in listed]

    def root(self):
        rich = self.item.get("bodyFormat") == RICH_TEXT
        html = "" if rich else self.text_of("htmlBody")
        inline = [a for a in self.attachments if a.content_id and html]
        rest = [a for a in self.attachments if a not in inline]
        body = text_part("plain", self.text_of("body"))
        if html:
            shown = text_part("html", html)
            if inline:
                shown = multipart("related", [shown, *(a.part("inline") for a in inline)])
            body = multipart("alternative", [body, shown]) if self.text_of("body") else shown
        elif rich and self.item.get("rtfBody"):
            rtf = encoded_part("text/rtf", decode_base64(self.item["rtfBody"], "rtfBody"))
            body = multipart("alternative", [body, rtf])
        if self.item.get("kind") in CALENDAR_KINDS:
            body = multipart("alternative", [body, self.calendar()])
        return multipart("mixed", [body, *(a.part("attachment") for a in rest)]) if rest else body

    def calendar(self):
        part = text_part("calendar", clean(calendar_part.write_calendar(self.item)))
        part.set_param("method", calendar_part.method_of(self.item))
        return part


class Attachment:
    def __init__(self, data, path):
        if not isinstance(data, dict):
            raise MailError(f"{path} is not an object")
        self.content = decode_base64(data.get("content") or "", f"{path}.content")
        # What the reader of the mail is shown.
        self.name = clean(data.get("displayName") or data.get("fileName") or "attachment")
        self.kind = data.get("mimeType") or mimetypes.guess_type(self.name)[0] or "application/octet-stream"
        self.content_id = clean(data.get("contentId") or "")
        self.embedded = data.get("type") == EMBEDDED_ITEM

    def part(self, disposition):
        if self.embedded:
            part = email.message.MIMEPart(policy=POLICY)
            part["Content-Type"] = "message/rfc822"
            part.set_payload([email.message_from_bytes(self.content, policy=POLICY)])
        else:
            part = encoded_part(self.kind, self.content)
        quoted = one_line(self.name).replace("\\", "_").replace('"', "'")
        part["Content-Disposition"] = f'{disposition}; filename="{quoted}"'
        if self.content_id:
            part["Content-ID"] = f"<{one_line(self.content_id)}>"
        return part


def one_address(name, address):
    try:
        return email.headerregistry.Address(name, addr_spec=address)
    except (email.errors.HeaderParseError, ValueError, IndexError):
        # Without an address that a mail can carry: the name alone, as a group of nobody.
        return email.headerregistry.Group(name or address or "nobody", ())


def text_part(kind, text):
    part = email.message.MIMEPart(policy=POLICY)
    part["Content-Type"] = f'text/{kind}; charset="utf-8"'
    data = re.sub(r"\r\n|\r", "\n", text).encode("utf-8")
    try:
        plain = data.decode("ascii")
    except UnicodeDecodeError:
        plain = None
    if plain is not None and all(len(line) <= 200 for line in plain.split("\n")):
        part["Content-Transfer-Encoding"] = "7bit"
        part.set_payload(plain)
    else:
        part["Content-Transfer-Encoding"] = "quoted-printable"
        part.set_payload(quopri.encodestring(data).decode("ascii"))
    return part


def encoded_part(kind, data):
    part = email.message.MIMEPart(policy=POLICY)
    part["Content-Type"] = one_line(kind) if re.match(r"[\w.+-]+/[\w.+-]+(;|$)", kind) else "application/octet-stream"
    part["Content-Transfer-Encoding"] = "base64"
    part.set_payload(base64.encodebytes(data).decode("ascii"))
    return part


def multipart(kind, parts):
    part = email.message.MIMEPart(policy=POLICY)
    part["Content-Type"] = f"multipart/{kind}"
    part.set_payload(parts)
    return part


def decode_base64(text, path):
    try:
        return base64.b64decode(text, validate=True)
    except (binascii.Error, TypeError, ValueError):
        raise MailError(f"{path} is not base64") from None


def write_mail(source, target):
    try:
        item = json.loads(read_bytes(source).decode("utf-8"))
    except UnicodeDecodeError as fault:
        raise MailError(f"byte {fault.start}: not UTF-8") from None
    except json.JSONDecodeError as fault:
        raise MailError(f"line {fault.lineno}, column {fault.colno}: {fault.msg}") from None
    if not isinstance(item, dict):
        raise MailError("the item is not an object")
    replace_file(target, Writer(item).as_bytes())


# ------------------------------------------------------------------------------------------------------------ files


def read_bytes(path):
    try:
        with open(path, "rb") as file:
            return file.read()
    except OSError as fault:
        raise MailError(fault.strerror) from None


def replace_file(path, data):
    """Writes beside the place and renames: a reader finds the old file or the new one."""
    folder = os.path.dirname(os.path.abspath(path))
    draft = None
    try:
        handle, draft = tempfile.mkstemp(dir=folder, prefix=".mail-")
        with os.fdopen(handle, "wb") as file:
            file.write(data)
        os.chmod(draft, 0o644)
        os.replace(draft, path)
    except OSError as fault:
        if draft and os.path.exists(draft):
            os.unlink(draft)
        raise MailError(f"cannot be written to {path}: {fault.strerror}") from None


def main(arguments):
    words = {"open": open_mail, "write": write_mail}
    if len(arguments) != 3 or arguments[0] not in words:
        print("usage: mail.py open MAIL.eml ITEM.json | mail.py write ITEM.json MAIL.eml", file=sys.stderr)
        return 2
    word, source, target = arguments
    try:
        words[word](source, target)
        return 0
    except MailError as fault:
        print(f"mail.py: {source}: {fault}", file=sys.stderr)
    except RecursionError:
        print(f"mail.py: {source}: parts nested too deep", file=sys.stderr)
    except Exception as fault:  # the email package trips over some malformed headers
        print(f"mail.py: {source}: malformed beyond reading: {type(fault).__name__}: {one_line(str(fault))}",
              file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
