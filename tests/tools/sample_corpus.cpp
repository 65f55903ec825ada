#include "sample_corpus.h"

#include "test_support.h"

namespace quillon::lingomat::test_support {

namespace {

std::vector<CorpusFile> build_corpus() {
  std::vector<CorpusFile> files;
  const auto add = [&](const char* language, const char* project, const char* path,
                       const char* content) {
    files.push_back({language, project, std::string(project) + "/" + path, content});
  };

  add("Python", "filetools", "filetools/walk.py", R"(import os
import sys


def list_files(root, suffix):
    found = []
    for name in sorted(os.listdir(root)):
        path = os.path.join(root, name)
        if os.path.isdir(path):
            found.extend(list_files(path, suffix))
        elif name.endswith(suffix):
            found.append(path)
    return found


if __name__ == "__main__":
    for path in list_files(sys.argv[1], ".txt"):
        print(path)
)");
  add("Python", "filetools", "filetools/config.py", R"(class Config:
    def __init__(self, values=None):
        self.values = dict(values or {})

    def get(self, key, default=None):
        return self.values.get(key, default)

    def set(self, key, value):
        self.values[key] = value
        return self

    def update(self, other):
        for key, value in other.items():
            self.set(key, value)
        return self
)");
  add("Python", "webhooks", "src/handler.py", R"(import json
from http.server import BaseHTTPRequestHandler


class Handler(BaseHTTPRequestHandler):
    def do_POST(self):
        length = int(self.headers.get("Content-Length", 0))
        body = self.rfile.read(length)
        event = json.loads(body)
        self.send_response(200)
        self.end_headers()
        self.server.events.append(event)

    def log_message(self, format, *args):
        pass
)");
  add("Python", "webhooks", "src/queue.py", R"(from collections import deque


class EventQueue:
    def __init__(self, limit):
        self.limit = limit
        self.items = deque()

    def push(self, item):
        if len(self.items) >= self.limit:
            self.items.popleft()
        self.items.append(item)

    def drain(self):
        while self.items:
            yield self.items.popleft()
)");
  add("Python", "statkit", "statkit/mean.py", R"(import math


def mean(values):
    values = list(values)
    if not values:
        raise ValueError("mean of nothing")
    return sum(values) / len(values)


def stddev(values):
    values = list(values)
    average = mean(values)
    total = sum((value - average) ** 2 for value in values)
    return math.sqrt(total / len(values))
)");
  add("Python", "statkit", "statkit/table.py", R"(class Table:
    def __init__(self, columns):
        self.columns = list(columns)
        self.rows = []

    def add(self, *row):
        if len(row) != len(self.columns):
            raise ValueError("wrong number of cells")
        self.rows.append(tuple(row))

    def column(self, name):
        index = self.columns.index(name)
        return [row[index] for row in self.rows]
)");

  add("C", "tinybuf", "src/buffer.c", R"(#include <stdlib.h>
#include <string.h>

#include "buffer.h"

int buffer_init(struct buffer *buf, size_t capacity) {
  buf->data = malloc(capacity);
  if (buf->data == NULL) {
    return -1;
  }
  buf->size = 0;
  buf->capacity = capacity;
  return 0;
}

void buffer_free(struct buffer *buf) {
  free(buf->data);
  buf->data = NULL;
  buf->size = buf->capacity = 0;
}
)");
  add("C", "tinybuf", "src/append.c", R"(#include <string.h>

#include "buffer.h"

static int grow(struct buffer *buf, size_t needed) {
  size_t capacity = buf->capacity ? buf->capacity : 16;
  while (capacity < needed) {
    capacity *= 2;
  }
  char *data = realloc(buf->data, capacity);
  if (data == NULL) {
    return -1;
  }
  buf->data = data;
  buf->capacity = capacity;
  return 0;
}

int buffer_append(struct buffer *buf, const char *text, size_t length) {
  if (buf->size + length > buf->capacity && grow(buf, buf->size + length) != 0) {
    return -1;
  }
  memcpy(buf->data + buf->size, text, length);
  buf->size += length;
  return 0;
}
)");
  add("C", "listlib", "list.c", R"(#include <stdlib.h>

#include "list.h"

struct node *list_push(struct node *head, int value) {
  struct node *node = malloc(sizeof *node);
  if (node == NULL) {
    return head;
  }
  node->value = value;
  node->next = head;
  return node;
}

int list_length(const struct node *head) {
  int length = 0;
  for (; head != NULL; head = head->next) {
    length++;
  }
  return length;
}
)");
  add("C", "listlib", "free.c", R"(#include <stdlib.h>

#include "list.h"

void list_free(struct node *head) {
  while (head != NULL) {
    struct node *next = head->next;
    free(head);
    head = next;
  }
}

struct node *list_reverse(struct node *head) {
  struct node *previous = NULL;
  while (head != NULL) {
    struct node *next = head->next;
    head->next = previous;
    previous = head;
    head = next;
  }
  return previous;
}
)");
  add("C", "cliargs", "args.c", R"(#include <stdio.h>
#include <string.h>

static int verbose = 0;

int parse_args(int argc, char **argv) {
  int i;
  for (i = 1; i < argc; i++) {
    if (strcmp(argv[i], "-v") == 0) {
      verbose = 1;
    } else if (argv[i][0] == '-') {
      fprintf(stderr, "unknown option %s\n", argv[i]);
      return -1;
    }
  }
  return i;
}
)");
  add("C", "cliargs", "main.c", R"(#include <stdio.h>
#include <stdlib.h>

int parse_args(int argc, char **argv);

int main(int argc, char **argv) {
  int first = parse_args(argc, argv);
  if (first < 0) {
    return EXIT_FAILURE;
  }
  for (int i = first; i < argc; i++) {
    FILE *file = fopen(argv[i], "r");
    if (file == NULL) {
      perror(argv[i]);
      continue;
    }
    fclose(file);
  }
  return EXIT_SUCCESS;
}
)");

  add("Shell", "deploy", "bin/deploy.sh", R"(#!/bin/sh
set -eu

target=${1:-staging}
if [ -z "$target" ]; then
  echo "usage: deploy.sh TARGET" >&2
  exit 1
fi

for host in $(cat hosts/$target); do
  echo "deploying to $host"
  rsync -a --delete build/ $host:/srv/app/
  ssh $host systemctl restart app
done
)");
  add("Shell", "deploy", "bin/rollback.sh", R"(#!/bin/sh
set -eu

release=$1
if [ ! -d releases/$release ]; then
  echo "no such release" >&2
  exit 1
fi

rm -f current
ln -s releases/$release current
for host in $(cat hosts/production); do
  ssh $host ln -sfn /srv/releases/$release /srv/current
done
echo done
)");
  add("Shell", "dotfiles", "install.sh", R"(#!/bin/bash
set -euo pipefail

cd $(dirname $0)
for file in bashrc vimrc gitconfig; do
  if [ -e $HOME/.$file ] && [ ! -L $HOME/.$file ]; then
    mv $HOME/.$file $HOME/.$file.bak
  fi
  ln -sf $PWD/$file $HOME/.$file
done

if command -v git >/dev/null; then
  git submodule update --init
fi
)");
  add("Shell", "dotfiles", "bashrc.sh", R"(export EDITOR=vim
export PATH=$HOME/bin:$PATH

alias ll='ls -l'
alias gs='git status'

mkcd() {
  mkdir -p $1 && cd $1
}

if [ -f $HOME/.bash_local ]; then
  . $HOME/.bash_local
fi

case $TERM in
  xterm*) PS1='\u@\h:\w\$ ' ;;
esac
)");
  add("Shell", "backup", "backup.sh", R"(#!/bin/sh
set -e

src=${1:?source folder}
dest=${2:?destination folder}
stamp=$(date +%Y%m%d)

mkdir -p $dest
tar -czf $dest/backup-$stamp.tar.gz -C $src .
find $dest -name 'backup-*.tar.gz' -mtime +30 -exec rm {} \;

if [ -n "${NOTIFY:-}" ]; then
  echo "backup of $src done" | mail -s backup $NOTIFY
fi
)");
  add("Shell", "backup", "restore.sh", R"(#!/bin/sh
set -e

archive=$1
dest=${2:-.}
if [ ! -f $archive ]; then
  echo "missing archive" >&2
  exit 1
fi

mkdir -p $dest
tar -xzf $archive -C $dest
for dir in $dest/*; do
  [ -d $dir ] && chmod 755 $dir
done
echo restored
)");

  add("HTML", "homepage", "index.html", R"(<!DOCTYPE html>
<html lang="en">
<head>
  <meta charset="utf-8">
  <title>Home</title>
  <link rel="stylesheet" href="style.css">
</head>
<body>
  <header class="top">
    <nav><a href="/">Home</a> <a href="/about.html">About</a></nav>
  </header>
  <main>
    <h1>Welcome</h1>
    <p class="lead">Notes and <em>small</em> projects.</p>
  </main>
</body>
</html>
)");
  add("HTML", "homepage", "about.html", R"(<!DOCTYPE html>
<html lang="en">
<head>
  <meta charset="utf-8">
  <title>About</title>
</head>
<body>
  <main>
    <h2>About</h2>
    <p>Written by <strong>someone</strong> who likes <a href="/">plain pages</a>.</p>
    <ul>
      <li>First item</li>
      <li>Second item</li>
    </ul>
  </main>
</body>
</html>
)");
  add("HTML", "docs", "guide/start.html", R"(<html>
<head>
  <title>Getting started</title>
  <meta name="viewport" content="width=device-width">
</head>
<body>
  <div class="content">
    <h1>Getting started</h1>
    <p>Install the package, then run the <code>setup</code> command.</p>
    <table>
      <tr><th>Option</th><th>Meaning</th></tr>
      <tr><td>quiet</td><td>less output</td></tr>
    </table>
  </div>
</body>
</html>
)");
  add("HTML", "docs", "guide/faq.html", R"(<html>
<head>
  <title>Questions</title>
</head>
<body>
  <div class="content">
    <h2 id="why">Why?</h2>
    <p>Because it is <em>simple</em>.</p>
    <h2 id="how">How?</h2>
    <ol>
      <li><a href="start.html">Read the guide</a></li>
      <li>Try it</li>
    </ol>
  </div>
</body>
</html>
)");
  add("HTML", "shop", "cart.html", R"(<!DOCTYPE html>
<html>
<head>
  <title>Cart</title>
  <script src="cart.js" defer></script>
</head>
<body>
  <form id="cart" action="/checkout" method="post">
    <label for="qty">Quantity</label>
    <input id="qty" name="qty" type="number" value="1">
    <select name="size">
      <option>S</option>
      <option>M</option>
    </select>
    <button type="submit">Buy</button>
  </form>
</body>
</html>
)");
  add("HTML", "shop", "thanks.html", R"(<!DOCTYPE html>
<html>
<head>
  <title>Thanks</title>
</head>
<body>
  <div class="notice">
    <h1>Thank you</h1>
    <p>Your order is on its way. <a href="/">Back to the shop</a></p>
    <img src="box.png" alt="box">
  </div>
  <footer><p>Shop &amp; more</p></footer>
</body>
</html>
)");
  return files;
}

}  // namespace

const std::vector<CorpusFile>& sample_corpus() {
  static const std::vector<CorpusFile> files = build_corpus();
  return files;
}

std::string sample_definitions() {
  return R"(# Test definitions
[Python]
extensions = .py .pyw
interpreters = python

[C]
extensions = .c .h

[Shell]
extensions = .sh .bash
filenames = .bashrc
interpreters = sh bash

[HTML]
extensions = .html .htm

# defined, but the corpus has no samples for it
[Markdown]
extensions = .md .markdown
filenames = README.md
)";
}

void write_sample_corpus(const std::string& root) {
  for (const CorpusFile& file : sample_corpus()) {
    write_text(root + "/" + file.language + "/" + file.relative_path, file.content);
  }
}

}  // namespace quillon::lingomat::test_support
