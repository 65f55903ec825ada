// What the two detectors most web editors use today call our languages. Their ids are
// mapped to this library's names; an id with no entry is compared by its lower-case spelling.
const HIGHLIGHT = {
  cpp: 'C++', csharp: 'C#', bash: 'Shell', shell: 'Shell', xml: 'XML', javascript: 'JavaScript',
  typescript: 'TypeScript', python: 'Python', objectivec: 'Objective-C', delphi: 'Pascal',
  lisp: 'Common Lisp', ocaml: 'OCaml', sml: 'Standard ML', fsharp: 'F#', tex: 'TeX',
  latex: 'TeX', dockerfile: 'Dockerfile', dos: 'Batchfile', powershell: 'PowerShell',
  vbnet: 'Visual Basic .NET', vim: 'Vim Script', elm: 'Elm', x86asm: 'Assembly',
  armasm: 'Assembly', properties: 'Java Properties', ini: 'INI', graphql: 'GraphQL',
  protobuf: 'Protocol Buffer', makefile: 'Makefile', markdown: 'Markdown', coffeescript: 'CoffeeScript',
  'php-template': 'PHP', glsl: 'GLSL', matlab: 'MATLAB', gnuplot: 'Gnuplot', dot: 'Graphviz (DOT)',
  verilog: 'Verilog', plaintext: '',
};
const VSCODE = {
  asm: 'Assembly', bat: 'Batchfile', c: 'C', cs: 'C#', cpp: 'C++', clj: 'Clojure',
  cmake: 'CMake', coffee: 'CoffeeScript', css: 'CSS', dart: 'Dart', dockerfile: 'Dockerfile',
  erl: 'Erlang', ex: 'Elixir', go: 'Go', groovy: 'Groovy', html: 'HTML', hs: 'Haskell',
  ini: 'INI', java: 'Java', js: 'JavaScript', json: 'JSON', jl: 'Julia', kt: 'Kotlin',
  lisp: 'Common Lisp', lua: 'Lua', makefile: 'Makefile', md: 'Markdown', matlab: 'MATLAB',
  mm: 'Objective-C', ml: 'OCaml', pas: 'Pascal', php: 'PHP', pl: 'Perl', ps1: 'PowerShell',
  py: 'Python', r: 'R', rb: 'Ruby', rs: 'Rust', scala: 'Scala', sh: 'Shell', sql: 'SQL',
  swift: 'Swift', tex: 'TeX', toml: 'TOML', ts: 'TypeScript', v: 'Verilog', xml: 'XML',
  yaml: 'YAML', prolog: 'Prolog', vba: 'Visual Basic .NET', csv: '',
};

function named(table, id) {
  if (id === undefined || id === null) return null;
  return table[id] ?? id;
}

export function sameLanguage(answer, language) {
  return typeof answer === 'string' && answer.toLowerCase() === language.toLowerCase();
}

export const highlightName = (id) => named(HIGHLIGHT, id);
export const vscodeName = (id) => named(VSCODE, id);
