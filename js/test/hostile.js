// A deterministic set of texts and file names that stress the tokenizer and the pipeline:
// empty and binary input, broken UTF-8, unterminated strings and comments, huge lines and
// tags, odd #! lines, and mixtures of languages, each under several names.
const encoder = new TextEncoder();

// A small seeded generator (mulberry32), so every run builds the same set.
function random(seed) {
  let state = seed >>> 0;
  return () => {
    state = (state + 0x6d2b79f5) >>> 0;
    let t = state;
    t = Math.imul(t ^ (t >>> 15), t | 1);
    t ^= t + Math.imul(t ^ (t >>> 7), t | 61);
    return ((t ^ (t >>> 14)) >>> 0) / 4294967296;
  };
}

const SNIPPETS = [
  '#include <stdio.h>\nint main(void) { printf("hi\\n"); return 0; }\n',
  'def f(x):\n    return [y for y in x if y]\n\nclass A(object):\n    pass\n',
  '<?php echo $a; ?>\n<html><body><div class="x">text</div></body></html>\n',
  'SELECT a, b FROM t WHERE c = \'x\' ORDER BY a;\n',
  'fn main() { let v: Vec<u8> = vec![1, 2]; println!("{:?}", v); }\n',
  '(defun f (x) (if (null x) nil (cons (car x) (f (cdr x)))))\n',
  '---\nkey: value\nlist:\n  - a\n  - b\n',
  '\\documentclass{article}\n\\begin{document}Hi\\end{document}\n',
];
const NAMES = ['', 'Makefile', 'x.h', 'a.b.c.rb', '.bashrc', 'n\u00e4me.py', 'CMakeLists.txt',
  'script', 'x.', 'x.md', 'cut\u0000.py'];

function bytes(text) {
  return typeof text === 'string' ? encoder.encode(text) : text;
}

export function hostileSet(seed = 24) {
  const next = random(seed);
  const pick = (list) => list[Math.floor(next() * list.length)];
  const texts = [
    '',
    ' \n\t\r\n   ',
    '\u0000\u0000\u0000int\u0000main',
    new Uint8Array([0xff, 0xfe, 0x00, 0x41, 0xc3, 0x28, 0xe2, 0x82, 0xf0, 0x9f, 0x98]),
    Uint8Array.from({ length: 4096 }, () => Math.floor(next() * 256)),
    'x'.repeat(100000),
    '('.repeat(5000) + ')'.repeat(4999),
    '/* never closed ' + 'int x; '.repeat(300),
    '"never closed ' + 'word '.repeat(500),
    '<' + 'a '.repeat(20000),
    '<div ' + 'attr="v" '.repeat(3000) + '>',
    '#!\n',
    '#! /bin/sh\necho $1\n',
    '#!/usr/bin/env -S python3 -u\nprint(1)\n',
    '#!/usr/local/bin/perl5.36 -w\nmy $x = 1;\n',
    '\ufeff// a byte-order mark first\nvar x = 1;\n',
    'caf\u00e9 na\u00efve \u65e5\u672c\u8a9e \ud83d\ude00 '.repeat(200),
    '\r\n'.repeat(3000) + 'end',
    '\'\'\'\n"""\n`\n' + '\\'.repeat(999),
  ];
  for (let i = 0; i < 16; i++) {
    let text = '';
    const parts = 1 + Math.floor(next() * 6);
    for (let j = 0; j < parts; j++) text += pick(SNIPPETS).repeat(1 + Math.floor(next() * 8));
    texts.push(text);
  }
  const cases = [];
  texts.forEach((text, i) => {
    cases.push({ id: `hostile-${i}`, bytes: bytes(text), name: NAMES[i % NAMES.length] });
    cases.push({ id: `hostile-${i}-named`, bytes: bytes(text), name: pick(NAMES) });
  });
  return cases;
}
