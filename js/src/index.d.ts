export interface EngineOptions {
  /** Bytes of a data file, plain JSON or gzip-compressed; the bundled one when omitted. */
  data?: Uint8Array | ArrayBuffer | ArrayBufferView;
  /** Tokens start only below this byte offset; 0 means no limit. Default 10240. */
  maxScanBytes?: number;
  /** Tokenizing stops at this many tokens; 0 means no limit. Default 500. */
  maxTokens?: number;
  /** Fewer tokens than this give no classifier answer; 0 means no minimum. Default 40. */
  minTokens?: number;
  /** Classifier answers below this score per token are dropped; 0 turns it off. Default -8. */
  minScorePerToken?: number;
  /** The only languages that may be answered, spelled as the data file spells them. */
  only?: string[];
}

export interface RankedLanguage {
  language: string;
  /** Natural-log probability; higher is better. */
  score: number;
}

export interface DecidingToken {
  token: string;
  count: number;
  /** How much the token's occurrences favour the answer over the rival, in natural-log units. */
  margin: number;
}

export interface Explanation {
  language: string | null;
  byFilename: string[];
  interpreter: string;
  byInterpreter: string[];
  extension: string;
  byExtension: string[];
  candidates: string[];
  tokenCount: number;
  keptCount: number;
  reason: 'none' | 'only candidate' | 'classifier' | 'first candidate';
  /** The language the deciding tokens are weighed against; empty when there is none. */
  rival: string;
  decidingTokens: DecidingToken[];
  ranking: Array<RankedLanguage & { perToken: number; kept: boolean }>;
}

export interface Engine {
  /** Every language the data file holds statistics for. */
  readonly languages: string[];
  /** The language of `text` (strings are UTF-8 encoded), or null. */
  identify(text: string | Uint8Array, filename?: string | null): string | null;
  /** The classifier's ranking before the floors, best first. */
  rank(text: string | Uint8Array, filename?: string | null): RankedLanguage[];
  /** Why `identify` answers as it does. */
  explain(text: string | Uint8Array, filename?: string | null): Explanation;
  /** Frees the engine; any later call throws. */
  dispose(): void;
}

export declare class LingomatError extends Error {
  /** The C interface's status code: -2 bad parameter, -3 memory, -4 file, -5 bad JSON. */
  readonly status: number;
}

export declare const defaultOptions: Readonly<Required<Omit<EngineOptions, 'data' | 'only'>>>;

export declare function createEngine(options?: EngineOptions): Promise<Engine>;
