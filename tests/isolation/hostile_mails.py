"""Mails that reach for what is not theirs: other machines, files, memory, and the terminal.

Each names what it wants in every way known: so whoever follows one of them is seen by those who watch
(watching.py)."""

import base64
import struct
import subprocess
import zlib

PIXEL = base64.b64decode('iVBORw0KGgoAAAANSUhEUgAAAAEAAAABCAYAAAAfFcSJAAAADUlEQVR42mNk+M9QDwADhgGAWjR9awAAAABJRU5ErkJg'
                         'gg==')

# What HTML can name an address in. WHERE is the address; NAME is another for each.
CARRIERS = [
    '<img src="WHERE">', "<img src='WHERE' srcset='WHERE 1x, WHERE 2x' sizes=100vw>", '<img lowsrc="WHERE" dynsrc="WHERE">',
    '<picture><source srcset="WHERE"><img src="WHERE"></picture>', '<image src="WHERE">',
    '<link rel=stylesheet href="WHERE">', '<link rel=prefetch href="WHERE">', '<link rel=preload as=image href="WHERE">',
    '<link rel=dns-prefetch href="WHERE">', '<link rel=preconnect href="WHERE">', '<link rel=prerender href="WHERE">',
    '<link rel=modulepreload href="WHERE">', '<link rel="shortcut icon" href="WHERE">', '<link rel=manifest href="WHERE">',
    '<link rel=import href="WHERE">', '<style>@import url("WHERE");</style>', '<style>@import "WHERE";</style>',
    '<style>.NAME{background:url("WHERE")}</style><p class=NAME>x', '<style>@font-face{font-family:NAME;src:url("WHERE")}'
    '.f-NAME{font-family:NAME}</style><p class=f-NAME>x', '<style>.l-NAME{list-style-image:url("WHERE")}</style><ul class=l-NAME><li>x</ul>',
    '<style>.c-NAME::before{content:url("WHERE")}</style><p class=c-NAME>x', '<p style="cursor:url(\'WHERE\'),auto">x',
    '<p style="background-image:u\\72l(\'WHERE\')">x', '<p style="border-image:url(\'WHERE\') 1">x',
    '<p style="background:image-set(\'WHERE\' 1x)">x', '<p style="mask:url(\'WHERE#m\')">x', '<p style="filter:url(\'WHERE#f\')">x',
    '<p style="behavior:url(\'WHERE\');-moz-binding:url(\'WHERE#x\')">x', '<table background="WHERE"><tr><td background="WHERE">x</table>',
    '<style>@media all{@import "WHERE";.m-NAME{background:url(WHERE)}}</style><p class=m-NAME>x',
    '<iframe src="WHERE"></iframe>', '<iframe srcdoc="&lt;img src=&quot;WHERE&quot;&gt;"></iframe>', '<frameset><frame src="WHERE"></frameset>',
    '<object data="WHERE" type="image/png"></object>', '<object classid="WHERE" codebase="WHERE"><param name=movie value="WHERE"></object>',
    '<embed src="WHERE">', '<applet archive="WHERE" code="WHERE" codebase="WHERE"></applet>',
    '<video src="WHERE" poster="WHERE" autoplay></video>', '<audio src="WHERE" autoplay></audio>',
    '<video autoplay><source src="WHERE"><track src="WHERE" default></video>', '<bgsound src="WHERE">',
    '<input type=image src="WHERE">', '<form action="WHERE" id=NAME><input name=a></form><button form=NAME formaction="WHERE">x</button>',
    '<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink"><image href="WHERE" width=9 height=9 />'
    '<image xlink:href="WHERE" width=9 height=9 /><use href="WHERE#x"/><feImage href="WHERE"/>'
    '<foreignObject><img src="WHERE"></foreignObject></svg>', '<math><mglyph src="WHERE"></mglyph></math>',
    '<script src="WHERE"></script>', '<script>new Image().src="WHERE";fetch("WHERE");document.write("<img src=WHERE>")</script>',
    '<script type=module>import "WHERE"</script>', '<img src=x onerror="new Image().src=\'WHERE\'">',
    '<body onload="location=\'WHERE\'" background="WHERE">', '<svg onload="fetch(\'WHERE\')"></svg>',
    '<a href="WHERE" ping="WHERE" download>a NAME</a>', '<area href="WHERE" ping="WHERE">', '<q cite="WHERE">x</q>',
    '<html manifest="WHERE"><head profile="WHERE">', '<ilayer src="WHERE"></ilayer><layer src="WHERE"></layer>',
    '<xml src="WHERE" id=x></xml><v:imagedata src="WHERE" xmlns:v="urn:schemas-microsoft-com:vml"/>',
    '<?xml-stylesheet href="WHERE"?>', '<!--[if gte mso 9]><img src="WHERE"><![endif]-->', '<noscript><img src="WHERE"></noscript>',
    '<template><img src="WHERE"></template>', '<textarea><img src="WHERE"></textarea>', '<esi:include src="WHERE"/><!--#include file="WHERE" -->',
]

# Those that only the first of a page counts of, or that all others would be read by.
STEERING = [
    '<meta http-equiv=refresh content="0;url=WHERE">', '<base href="WHERE/">', '<meta http-equiv="Link" content="<WHERE>; rel=stylesheet">',
    '<meta http-equiv="Set-Cookie" content="a=b"><meta http-equiv="Location" content="WHERE">',
    '<meta http-equiv="Content-Security-Policy" content="default-src *; report-uri WHERE">',
    '<meta http-equiv="Content-Security-Policy-Report-Only" content="default-src none; report-uri WHERE">',
    '<meta name=referrer content=unsafe-url><meta http-equiv="X-DNS-Prefetch-Control" content="on">',
]

RTF_CARRIERS = [
    r'{\field\flddirty{\*\fldinst INCLUDEPICTURE "WHERE" \\d}{\fldrslt x}}', r'{\field\flddirty{\*\fldinst INCLUDETEXT "WHERE"}{\fldrslt x}}',
    r'{\field\flddirty{\*\fldinst LINK htmlfile "WHERE" \\a}{\fldrslt x}}', r'{\field\flddirty{\*\fldinst DDEAUTO cmd "WHERE"}{\fldrslt x}}',
    r'{\field\flddirty{\*\fldinst IMPORT "WHERE"}{\fldrslt x}}', r'{\field\flddirty{\*\fldinst RD "WHERE"}{\fldrslt x}}',
    r'{\field\flddirty{\*\fldinst HYPERLINK "WHERE"}{\fldrslt x}}', r'{\*\template WHERE}', r'{\*\nextfile WHERE}', r'{\*\private WHERE}',
    r'{\filetbl{\file\fid1\frelative0 WHERE}}\subdocument1 ', r'{\*\linkval WHERE}{\*\datafield WHERE}{\*\hlsrc WHERE}{\*\hlloc WHERE}',
    r'{\object\objautlink\objupdate\objw900\objh900{\*\objclass htmlfile}{\*\objname WHERE}{\*\objdata 0105}{\result x}}',
    r'{\object\objemb\objupdate\objw900\objh900{\*\objclass Package}{\*\objdata 01050000}{\result x}}',
    r'{\object\objhtml\objw900\objh900{\*\objclass htmlfile}{\*\objalias WHERE}{\*\objsect x}{\*\objdata 0105}{\result x}}',
    r'{\*\xmlnstbl{\xmlns1 WHERE}}{\*\xmlopen\xmlns1{\factoidname x}}', r'{\*\mailmerge{\*\mmdatasource WHERE}{\*\mmheadersource WHERE}}',
    r'{\shp{\*\shpinst{\sp{\sn pibName}{\sv WHERE}}{\sp{\sn pibFlags}{\sv 14}}{\sp{\sn pihlShape}{\sv WHERE}}}}',
    r'{\*\background{\shp{\*\shpinst{\sp{\sn fillBlipName}{\sv WHERE}}{\sp{\sn fillBlipFlags}{\sv 14}}}}}',
]

# Codes by which a text moves the cursor, names the window, asks the terminal for answers, or turns the
# writing round; each begins with what tells it from all that the programs write themselves.
CODES = [
    '\x1b]0;owned\x07', '\x1b]52;c;b3duZWQ=\x07', '\x1b]8;;http://127.0.0.1/\x1b\\x\x1b]8;;\x1b\\', '\x1bP$q"p\x1b\\', '\x1b[2J',
    '\x1b[6n', '\x1b[?1049h', '\x1b[31m', '\x1bc', '\x1b_x\x1b\\', '\x1b^x\x1b\\', '\x9b2J', '\x9d0;owned\x9c', '\x90x\x9c', '\x85', '\x08\x08', '\x7f',
    '\x0b', '\x0c', '\x0e', '\x0f', '\x05', '\x00', '\u202eabc', '\u2066x\u2069', '\u200f', '\u061c', '\u2028', '\u2029', '\ufeff',
]
ALL_CODES = ''.join(CODES)


def addresses(port, secret):
    """By name: what is not the mail's, as a mail can name it."""
    return {
        'http': f'http://127.0.0.1:{port}/NAME', 'relative-scheme': f'//127.0.0.1:{port}/NAME', 'name': f'http://localhost:{port}/NAME',
        'http6': f'http://[::1]:{port}/NAME', 'https': f'https://127.0.0.1:{port}/NAME', 'ftp': f'ftp://127.0.0.1:{port}/NAME',
        'elsewhere': f'http://NAME.example.invalid:{port}/NAME', 'websocket': f'ws://127.0.0.1:{port}/NAME',
        'upper': f'HTTP://127.0.0.1:{port}/NAME', 'broken': f'ht\ntp://127.0.0.1:{port}/NAME', 'user': f'http://a:b@127.0.0.1:{port}/NAME',
        'share': rf'\\127.0.0.1@{port}\share\NAME', 'share-file': f'file://127.0.0.1:{port}/share/NAME', 'smb': f'smb://127.0.0.1:{port}/NAME',
        'file': f'file://{secret}', 'file-host': f'file://localhost{secret}', 'file-short': f'file:{secret}', 'path': secret,
        'path-encoded': 'file://' + secret.replace('s', '%73'), 'upwards': '../secret.png', 'beside': 'secret.png', 'backwards': '..\\secret.png',
        'vnd': f'vnd.sun.star.expand:{secret}', 'zip': f'jar:file://{secret}!/x',
        'memory': 'file:///proc/self/mem', 'environment': 'file:///proc/self/environ', 'maps': '/proc/self/maps', 'handle': 'file:///proc/self/fd/3',
        'parent': '/proc/PARENT/environ', 'accounts': 'file:///etc/shadow', 'shared': 'file:///dev/shm/secret', 'device': 'file:///dev/zero',
        'script': 'javascript:document.title=1', 'data': 'data:text/html,<script>document.title=1</script>', 'blob': 'blob:null/1',
        'about': 'about:config', 'chrome': 'chrome://version', 'cid': 'cid:../secret.png', 'mid': 'mid:1@x/../secret.png',
    }


def filled(carriers, where):
    """Each carrier, with each address."""
    pieces = []
    for number, carrier in enumerate(carriers):
        for name, address in where.items():
            unique = f'{name}-{number}'
            pieces.append(carrier.replace('WHERE', address.replace('NAME', unique)).replace('NAME', unique))
    return pieces


def word(text):
    return '=?utf-8?b?%s?=' % base64.b64encode(text.encode()).decode()


def folded(data):
    return base64.encodebytes(data).decode()


def mail(subject, *parts, kind='related', fields=''):
    """A mail of parts, each with its header."""
    head = ('From: Ann <ann@example.com>\nTo: Bob <bob@example.com>\nDate: Wed, 1 May 2024 10:34:56 +0000\n'
            f'Message-ID: <{subject.replace(" ", ".")}@example.com>\nSubject: {subject}\n{fields}MIME-Version: 1.0\n')
    return head + f'Content-Type: multipart/{kind}; boundary=sep\n\n' + ''.join(f'--sep\n{part}\n' for part in parts) + '--sep--\n'


def part(content_type, body, fields=''):
    data = body if isinstance(body, bytes) else body.encode()
    return f'Content-Type: {content_type}\nContent-Transfer-Encoding: base64\n{fields}\n{folded(data)}'


def page(body, head=''):
    return f'<html><head>{head}</head><body><h1>shown</h1>{body}<p>the end</p></body></html>'


def html_mails(where, steered_to):
    """All carriers with all addresses; and one mail for each way to steer a page, with each of some addresses."""
    mails = {'carriers.eml': mail('Carriers', part('text/html; charset=utf-8', page('\n'.join(filled(CARRIERS, where)))))}
    few = {name: where[name] for name in steered_to}
    for number, steering in enumerate(filled(STEERING, few)):
        rest = ''.join(filled(['<img src="NAME.png">', '<a href="NAME">x</a>'], few))
        mails[f'steering-{number}.eml'] = mail(f'Steering {number}', part('text/html; charset=utf-8', page(rest, steering)))
    return mails


def part_mails(port, secret):
    """What is named beside the text: places of parts, references to bodies elsewhere, cards, calendars."""
    local = f'file://{secret}'
    picture = part('image/png; name="../../escaped.png"', PIXEL[:40],
                   f'Content-Location: {local}\nContent-ID: <../../escaped@x>\nContent-Base: file:///\n'
                   'Content-Disposition: inline; filename="../../escaped.png"\n')
    external = ''.join(
        f'--sep\nContent-Type: message/external-body; {parameters}\n\nContent-Type: text/plain\nContent-ID: <{number}@x>\n\n'
        for number, parameters in enumerate([
            f'access-type=local-file; name="{secret}"', f'access-type=LOCAL-FILE; name="{secret}"; site=localhost',
            f'access-type=anon-ftp; site="127.0.0.1"; directory="/"; name="{port}"', f'access-type=tftp; site=127.0.0.1; name="{secret}"',
            f'access-type=URL; URL="http://127.0.0.1:{port}/external"', f'access-type=URL; URL="{local}"',
            'access-type=mail-server; server="x@127.0.0.1"', 'access-type=x-shell; name="touch /tmp/escaped"']))
    external_mail = mail('External', part('text/plain', 'shown\n'), kind='mixed').replace('--sep--\n', external + '--sep--\n')
    card = ('BEGIN:VCARD\nVERSION:4.0\nFN:shown\nPHOTO:WHERE\nLOGO;VALUE=URI:WHERE\nSOUND:WHERE\nKEY:WHERE\nSOURCE:WHERE\nURL:WHERE\n'
            'FBURL:WHERE\nCALURI:WHERE\nIMPP:WHERE\nX-ALT:WHERE\nEND:VCARD\n')
    calendar = ('BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:x\nMETHOD:REQUEST\nBEGIN:VEVENT\nUID:1\nDTSTAMP:20240501T103456Z\n'
                'DTSTART;TZID=/../../..SECRET:20240501T103456\nSUMMARY;ALTREP="WHERE":shown\nATTACH:WHERE\nATTACH;FMTTYPE=image/png:WHERE\n'
                'URL:WHERE\nCONFERENCE;VALUE=URI:WHERE\nIMAGE;VALUE=URI:WHERE\nX-ALT-DESC;FMTTYPE=text/html:<img src="WHERE">\n'
                'DESCRIPTION;ALTREP="WHERE":WHERE\nBEGIN:VALARM\nACTION:PROCEDURE\nTRIGGER:-PT0M\nATTACH:WHERE\nEND:VALARM\n'
                'BEGIN:VALARM\nACTION:AUDIO\nTRIGGER:-PT0M\nATTACH:WHERE\nEND:VALARM\nORGANIZER;DIR="WHERE":mailto:a@example.com\n'
                'END:VEVENT\nEND:VCALENDAR\n').replace('SECRET', secret)
    mails = {
        'locations.eml': mail('Locations', part('text/html; charset=utf-8', page(f'<img src="{local}"><img src="cid:../../escaped@x">')), picture,
                              fields=f'Content-Base: file:///\nContent-Location: {local}\n'),
        'external.eml': external_mail,
        'uuencoded.eml': mail('Uuencoded', f'Content-Type: text/plain\n\nshown\nbegin 644 ../../escaped\n#0V%T\n`\nend\nbegin 644 {secret}\n#0V%T\n`\nend\n'),
        'lists.eml': mail('Lists', part('text/plain', f'shown http://127.0.0.1:{port}/text {local}\n'),
                          fields=f'List-Unsubscribe: <http://127.0.0.1:{port}/unsubscribe>\nList-Unsubscribe-Post: List-Unsubscribe=One-Click\n'
                          f'X-Face-URL: http://127.0.0.1:{port}/face\nFace: {local}\nDisposition-Notification-To: <a@127.0.0.1>\n'
                          f'Return-Receipt-To: <a@127.0.0.1>\nX-Image-Url: http://127.0.0.1:{port}/image\nArchived-At: <http://127.0.0.1:{port}/archived>\n'),
    }
    for name, address in (('http', f'http://127.0.0.1:{port}/part'), ('file', local)):
        mails[f'card-{name}.eml'] = mail(f'Card {name}', part('text/vcard; charset=utf-8', card.replace('WHERE', address)), kind='mixed')
        mails[f'calendar-{name}.eml'] = mail(f'Calendar {name}', part('text/plain', 'shown\n'),
                                             part('text/calendar; charset=utf-8; method=REQUEST', calendar.replace('WHERE', address)),
                                             kind='alternative')
    return mails


ESCAPING_NAMES = ['../escaped', '../../../../../../tmp/escaped', '/tmp/escaped', '..', '.', '~/escaped', '$(touch escaped)', '`touch escaped`',
                  '|touch escaped', 'a\x00/../../escaped', 'C:\\escaped', '..\\escaped', '\\\\127.0.0.1\\share\\escaped', 'a\u202egnp.exe',
                  '../\u202efdp.escaped', '%2e%2e%2fescaped', '..%c0%afescaped', '\uff0e\uff0e\uff0fescaped', 'file:///tmp/escaped',
                  '-rf', '--output=escaped', '.bashrc', 'manifest.jsonl', '../message.html', '../../manifest.jsonl', 'x' * 300 + '/../escaped']


def name_mails():
    """Attachments with names that lead elsewhere, by every parameter that gives a name."""
    parts = []
    for name in ESCAPING_NAMES:
        raw = name.replace('\\', '\\\\').replace('"', '\\"')
        percent = ''.join('%%%02X' % byte for byte in name.encode())
        for field in (f'filename="{raw}"', f'filename="{word(name)}"', f"filename*=utf-8''{percent}", f"filename*0*=utf-8''{percent}; filename*1=x"):
            parts.append(part('application/octet-stream', b'escaped', f'Content-Disposition: attachment; {field}\n'))
        parts.append(part(f'application/octet-stream; name="{word(name)}"', b'escaped'))
    return {'names.eml': mail('../../escaped', part('text/plain', 'shown\n'), *parts, kind='mixed'),
            'names-of-mails.eml': mail('Names', part('text/plain', 'shown\n'), *[
                f'Content-Type: message/rfc822; name="{word(name)}"\n\nSubject: {word(name)}\nFrom: a@example.com\n\nshown\n'
                for name in ESCAPING_NAMES], kind='mixed')}


def code_mails(few=False):
    """Codes for the terminal wherever a mail has a text: all together, and unless few are wanted each alone."""
    mails = {}
    for number, code in enumerate([ALL_CODES, *([] if few else CODES)]):
        name, raw = word(code), code.replace('\x00', '').replace('\n', '')
        fields = (f'Reply-To: {name} <a@example.com>\nSender: {name} <s@example.com>\nCc: "{raw}" <c@example.com>, {name} <d@{raw}.example>\n'
                  f'Bcc: {name}\nIn-Reply-To: <{raw}@x>\nReferences: <{raw}@x>\nImportance: {raw}\nX-Mailer: {raw}\nKeywords: {name}\n'
                  f'X-{raw}: {raw}\nReceived: from {raw}; {raw}\nContent-Description: {name}\nContent-Location: {raw}\n')
        percent = ''.join('%%%02X' % byte for byte in code.encode())
        entities = ''.join('&#%d;' % ord(character) for character in code)
        calendar = (f'BEGIN:VCALENDAR\nVERSION:2.0\nPRODID:x\nMETHOD:{raw}\nBEGIN:VEVENT\nUID:{raw}\nDTSTAMP:20240501T103456Z\nSUMMARY:{raw}\n'
                    f'DTSTART;TZID={raw}:20240501T103456\nLOCATION:{raw}\nORGANIZER;CN="{raw}":mailto:{raw}\nEND:VEVENT\nEND:VCALENDAR\n')
        mails[f'codes-{number}.eml'] = mail(
            f'c{number} {name}',
            part(f'text/html; charset=utf-8; x-{number}="{raw}"', page(f'{raw} {entities} <a href="http://x/{entities}" title="{entities}">x</a>'
                                                                     f'<img alt="{entities}" src=x>')),
            part(f'text/plain; charset="{raw}"', code, f'Content-Disposition: attachment; filename="{name}"\nContent-ID: <{raw}>\n'),
            part(f'text/{raw}', code, f'Content-Disposition: attachment; filename="{raw}"\n'),
            f'Content-Type: text/plain\nContent-Transfer-Encoding: {raw}\nContent-Disposition: {raw}; filename*=utf-8\'\'{percent}\n\n{raw}\n',
            f'Content-Type: message/external-body; access-type="{raw}"; name="{raw}"; URL="{raw}"\n\nContent-Type: {raw}\n\n',
            f'Content-Type: message/rfc822\nContent-Description: {raw}\n\nFrom: {raw}\nSubject: {name}\nContent-Type: {raw}\n\n{raw}\n',
            part('text/calendar; charset=utf-8', calendar),
            part('text/vcard; charset=utf-8', f'BEGIN:VCARD\nVERSION:4.0\nFN:{raw}\nNOTE:{raw}\nEND:VCARD\n'),
            kind='mixed', fields=fields)
        mails[f'plain-{number}.eml'] = (f'From: {name} <ann@example.com>\nTo: "{raw}" <{raw}@example.com>\nDate: {raw}\n'
                                        f'Message-ID: <{raw}>\nSubject: {raw}\nContent-Type: text/plain; charset={raw or "x"}\n\n{code}\n')
        # Bytes of C1 controls as they are, in no charset or that of old mails.
        mails[f'bytes-{number}.eml'] = (b'From: ann@example.com\nTo: bob@example.com\nDate: Wed, 1 May 2024 10:34:56 +0000\nSubject: ' +
                                        raw.encode('latin-1', 'ignore').replace(b'\n', b'') + b'\nContent-Type: text/plain; charset=iso-8859-1\n\n' +
                                        code.encode('latin-1', 'ignore') + b'\n')
    return mails


def chunk(name, data):
    return struct.pack('>I', len(data)) + name + data + struct.pack('>I', zlib.crc32(name + data))


def half_pictures():
    """A mail with pictures that say they are larger than their bytes."""
    size = 200
    rows = zlib.compress((b'\0' + b'\x40\x80\xc0' * size) * 9)
    png = (b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', struct.pack('>IIBBBBB', size, size, 8, 2, 0, 0, 0)) + chunk(b'IDAT', rows[:-6]))
    gif = (b'GIF89a' + struct.pack('<HHBBB', size, size, 0x80, 0, 0) + b'\x40\x80\xc0\xff\xff\xff' + b'\x2c' +
           struct.pack('<HHHHB', 0, 0, size, size, 0) + b'\x02\x03\x84\x8f\xa9')
    bmp = b'BM' + struct.pack('<IHHI', 54 + 30, 0, 0, 54) + struct.pack('<IiiHHIIiiII', 40, size, size, 1, 24, 0, 0, 0, 0, 0, 0) + b'\x40' * 30
    # One component, whose blocks are two bits each: no difference, no more of it.
    jpeg = (b'\xff\xd8\xff\xdb\x00\x43\x00' + b'\x01' * 64 + b'\xff\xc0\x00\x0b\x08' + struct.pack('>HH', size, size) + b'\x01\x01\x11\x00' +
            b'\xff\xc4\x00\x14\x00\x01' + bytes(15) + b'\x00' + b'\xff\xc4\x00\x14\x10\x01' + bytes(15) + b'\x00' +
            b'\xff\xda\x00\x08\x01\x01\x00\x00\x3f\x00' + bytes(8))
    kinds = {'png': png, 'gif': gif, 'bmp': bmp, 'jpeg': jpeg}
    return mail('Half', part('text/html; charset=utf-8', page(''.join(f'<img src="cid:{kind}@x" width=200 height=200>' for kind in kinds))),
                *[part(f'image/{kind}; name=half.{kind}', data, f'Content-ID: <{kind}@x>\n') for kind, data in kinds.items()])


def full_of(text):
    """A mail whose text and picture hold that all over."""
    size = 200
    row = (text.encode() * size)[:3 * size]
    png = (b'\x89PNG\r\n\x1a\n' + chunk(b'IHDR', struct.pack('>IIBBBBB', size, size, 8, 2, 0, 0, 0)) +
           chunk(b'IDAT', zlib.compress((b'\0' + row) * size)) + chunk(b'IEND', b''))
    return mail(text, part('text/html; charset=utf-8', page(f'<img src="cid:full@x"><p>{text * 2000}')),
                part('image/png; name=full.png', png, 'Content-ID: <full@x>\n'))


def rtf(where):
    body = ''.join(filled(RTF_CARRIERS, {name: address.replace('\\', '\\\\').replace('\n', '') for name, address in where.items()}))
    return r'{\rtf1\ansi{\fonttbl{\f0 Arial;}}\f0 shown\par ' + body + r'\par the end}'


def write(files, folder):
    """The mails as files; their paths."""
    paths = []
    for name, content in files.items():
        path = f'{folder}/{name}'
        with open(path, 'wb') as file:
            file.write(content if isinstance(content, bytes) else content.encode('utf-8', 'surrogateescape'))
        paths.append(path)
    return paths


def write_msg(maker, folder, where, elsewhere):
    """MSG files with RTF and HTML of all carriers, and attachments that are kept elsewhere; their paths."""
    paths = []
    for kind, body in (('rtf', rtf(where)), ('html', page('\n'.join(filled(CARRIERS, where))))):
        with open(f'{folder}/../body', 'w') as file:
            file.write(body)
        paths.append(f'{folder}/{kind}.msg')
        subprocess.run([maker, kind, f'{folder}/../body', elsewhere, paths[-1]], check=True)
    return paths
