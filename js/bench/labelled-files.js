// The labelled files the comparison runs on, each { path, language }: this repository's own
// sources, labelled by what they are, and, when a local copy of the sample projects exists
// (LINGOMAT_CORPUS_GIT, a folder laid out as OWNER+REPO/path with a SOURCES.tsv), up to
// `perLanguage` files of every language there, from as many projects as possible.
import { execFileSync } from 'node:child_process';
import { existsSync, readFileSync } from 'node:fs';
import path from 'node:path';

const BY_EXTENSION = {
  '.c': 'C', '.h': 'C++', '.cpp': 'C++', '.sh': 'Shell', '.py': 'Python', '.md': 'Markdown',
  '.js': 'JavaScript', '.mjs': 'JavaScript', '.ts': 'TypeScript', '.json': 'JSON',
  '.cmake': 'CMake', '.css': 'CSS', '.html': 'HTML', '.yml': 'YAML', '.yaml': 'YAML',
  '.toml': 'TOML',
};
const BY_NAME = { 'CMakeLists.txt': 'CMake' };

export function repositoryFiles(repo) {
  const listed = execFileSync('git', ['-C', repo, 'ls-files', '-z'], { encoding: 'utf8' });
  return listed.split('\0').filter(Boolean).flatMap((file) => {
    const language = BY_NAME[path.basename(file)] ?? BY_EXTENSION[path.extname(file)];
    // The data file is generated, and far larger than anything pasted.
    if (!language || file.startsWith('data/') || file.endsWith('package-lock.json')) return [];
    return [{ path: path.join(repo, file), language, set: 'repository' }];
  });
}

export function sampleFiles(corpus, perLanguage) {
  if (!corpus || !existsSync(path.join(corpus, 'SOURCES.tsv'))) return [];
  const byLanguage = new Map();
  const lines = readFileSync(path.join(corpus, 'SOURCES.tsv'), 'utf8').split('\n').slice(1);
  for (const line of lines.filter(Boolean)) {
    const [language, repo, , , , paths] = line.split('\t');
    const folder = path.join(corpus, repo.replace('/', '+'));
    const files = (paths ?? '').split(' ').filter(Boolean).map((file) => path.join(folder, file))
      .filter((file) => existsSync(file));
    if (!byLanguage.has(language)) byLanguage.set(language, []);
    byLanguage.get(language).push(files);
  }
  const chosen = [];
  for (const [language, projects] of byLanguage) {
    // Round-robin over the projects, so that no single project dominates a language.
    const picked = [];
    for (let i = 0; picked.length < perLanguage && projects.some((files) => i < files.length); i++) {
      for (const files of projects) {
        if (i < files.length && picked.length < perLanguage) picked.push(files[i]);
      }
    }
    chosen.push(...picked.map((file) => ({ path: file, language, set: 'samples' })));
  }
  return chosen;
}
