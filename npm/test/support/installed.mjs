// An empty folder into which the package has been installed from its tarball, without a network.
import { execFileSync } from 'node:child_process';
import { cpSync, mkdtempSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath } from 'node:url';

const home = fileURLToPath(new URL('../../', import.meta.url));

export function installed() {
  const folder = mkdtempSync(join(tmpdir(), 'quor-npm-'));
  const npm = (in_, ...words) =>
    execFileSync('npm', words, {
      cwd: in_,
      encoding: 'utf8',
      stdio: ['ignore', 'pipe', 'inherit'],
    });
  const tarball = npm(home, 'pack', '--silent', '--pack-destination', folder).trim();
  writeFileSync(join(folder, 'package.json'), '{"private":true,"type":"module"}');
  npm(folder, 'install', '--silent', '--offline', '--no-audit', '--no-fund', `./${tarball}`);
  return { folder, tarball: join(folder, tarball), package: join(folder, 'node_modules/quor') };
}

/** Another package of this one's development, as if it had been installed, too. */
export function addPackage(folder, name) {
  cpSync(join(home, 'node_modules', name), join(folder, 'node_modules', name), { recursive: true });
}
